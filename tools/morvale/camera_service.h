/// Drives the library exactly as a camera service does.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "frame_input.h"
#include "morvale.h"

namespace tool {

enum class Camera { kFront, kBack };

/// How a frame relates to the network input (square, `pad_size`) and to the label map.
struct Geometry {
  int width = 0, height = 0, stride = 0;    ///< the frame
  int pad_size = 0, net_size = 0;           ///< side of the network's input and output
  int shrunk_width = 0, shrunk_height = 0;  ///< the picture's part of the input, at its top-left corner
  int seg_factor = 0;                       ///< label-map rows that the analyses read
  float scale_ratio = 0;                    ///< frame width / pad_size
};

/// All that is known about a frame after it went through the library.
struct FrameReport {
  Camera camera = Camera::kFront;
  int process = 0;  ///< what Morvale_process returned
  int status = 0;
  uint32_t frame_count = 0;
  Geometry geometry;
  std::vector<FaceRect> camera_faces;
  std::vector<FaceRect> person_boxes;  ///< the first personCount boxes; what lies behind them is stale
  PersonWholeMeta record{};
  std::vector<uint8_t> label_map;  ///< net_size x seg_factor cells of five scores, as the analysis read them
};

/// One camera session, from Morvale_core_init to Morvale_core_deinit. The library keeps its state per
/// process: never have two at a time.
class CameraService {
 public:
  /// Opens the camera's model. Throws RunError when it does not open.
  explicit CameraService(Camera camera);
  ~CameraService();
  CameraService(const CameraService&) = delete;
  CameraService& operator=(const CameraService&) = delete;

  /// Sends one frame through. `faces`: at most kMaxFaces.
  FrameReport analyze(const Frame& frame, const std::vector<FaceRect>& faces);

 private:
  void deliver(const Frame& frame, const std::vector<FaceRect>& faces);

  Camera camera_;
  MorvaleData_t data_{};
  std::vector<uint8_t> planes_;  ///< the library draws into the frame at higher debug levels: it gets a copy
  MorvaleCore core_;
};

/// Points the neural runtime at the folder of its models: the one given, else $VEXA_MODEL_DIR, else the cache
/// folder. Throws UsageError when a given folder does not exist, RunError when the folder holds no model.
void choose_model_folder(const std::optional<std::string>& given);

}  // namespace tool
