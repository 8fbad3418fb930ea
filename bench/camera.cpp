#include "bench/camera.h"

#include <stdexcept>

#include "bench/silent_platform.h"

namespace bench {

Camera::Camera(int camera_type, const ScoreMap& map, int frame_width, int frame_height) {
  record_.cameraType = camera_type;
  record_.width = frame_width;
  record_.height = frame_height;
  core_.Morvale_core_init(&record_);
  if (core_.Morvale_core_setModel(camera_type) != 1) throw std::runtime_error("the model did not open");
  answer_with(map.network_scores(NETSIZE));
}

Camera::~Camera() { core_.Morvale_core_deinit(); }

void Camera::run_frame(const uint8_t* nv21) {
  // The library writes into the frame only where debug drawings are wanted.
  record_.yPlane = record_.uvPlane = const_cast<uint8_t*>(nv21);
  PersonWholeMeta result;
  core_.Morvale_process();
  core_.Morvale_core_afterProcss();
  core_.Morvale_core_getresult(&result);
}

}  // namespace bench
