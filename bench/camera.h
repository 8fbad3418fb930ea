/// A core with its caller's record, on the silent platform. One may live at a time: the core's state is the
/// process's.
#pragma once

#include <cstdint>

#include <morvale/morvale.h>
#include "bench/pictures.h"

namespace bench {

constexpr int kBackCamera = 0;

class Camera {
 public:
  /// Opens the camera's model. The network answers with `map`.
  Camera(int camera_type, const ScoreMap& map, int frame_width, int frame_height);
  ~Camera();
  Camera(const Camera&) = delete;
  Camera& operator=(const Camera&) = delete;

  MorvaleCore& core() { return core_; }

  /// One frame, from the record to the result, as the camera service does it.
  void run_frame(const uint8_t* nv21);

 private:
  MorvaleData_t record_{};
  MorvaleCore core_;
};

}  // namespace bench
