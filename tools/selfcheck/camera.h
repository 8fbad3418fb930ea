/// A core with its caller's record whose network answers what it is told. One may live at a time: the core's
/// state is the process's.
#pragma once

#include <morvale/morvale.h>
#include "selfcheck/figures.h"
#include "selfcheck/inputs.h"

namespace morvale::selfcheck {

constexpr int kBackCamera = 0;

class Camera {
 public:
  /// Opens the camera's model on empty rings. Whatever the platform's runtime says, the frames run on a
  /// session of this class.
  explicit Camera(int camera_type);
  ~Camera();
  Camera(const Camera&) = delete;
  Camera& operator=(const Camera&) = delete;

  MorvaleCore core;
  MorvaleData_t record{};

  /// The camera's next frame.
  void take(Bytes nv21, int width, int height);
  Bytes frame;

  /// The network answers with these scores from now on.
  void answer_with(std::vector<float> scores);

  /// One frame, from the record to the result, as the camera service does it. Returns what Morvale_process
  /// did.
  int run_frame();

 private:
  vexa::VexaSession* platform_session_;
};

/// Digests of the words that an analysis writes, by name.
class Sheet {
 public:
  void add(const char* name, const void* data, size_t bytes) { digest(name).add(data, bytes); }
  template <class T>
  void add(const char* name, const T& value) {
    digest(name).add(value);
  }
  /// The record and what the core keeps beside it.
  void add_results(const MorvaleCore& core);

  /// As "`title`: name".
  void append_to(Figures& figures, const std::string& title) const;

 private:
  Digest& digest(const char* name);

  std::vector<std::pair<std::string, Digest>> digests_;
};

}  // namespace morvale::selfcheck
