/// Drives the library exactly as a camera service does.
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include <morvale/morvale.h>
#include "service/frame_input.h"
#include "service/plane_bytes.h"
#include "service/runtime_probe.h"
#include "session/bundle.h"

namespace tool {

enum class Camera { kFront, kBack };

/// The camera of a record's cameraType.
Camera camera_of(int32_t camera_type);
int32_t camera_type_of(Camera camera);

/// How a frame relates to the network input (square, `pad_size`) and to the label map.
struct Geometry {
  int width = 0, height = 0, stride = 0;    ///< the frame
  int pad_size = 0, net_size = 0;           ///< side of the network's input and output
  int shrunk_width = 0, shrunk_height = 0;  ///< the picture's part of the input, at its top-left corner
  int seg_factor = 0;                       ///< label-map rows that the analyses read
  float scale_ratio = 0;                    ///< frame width / pad_size

  bool operator==(const Geometry&) const = default;
};

/// When the calls of a frame began and ended.
struct FrameTimes {
  std::chrono::steady_clock::time_point start, processed, analysed, done;
};

/// Milliseconds of a frame's stages; absent: not known, or the network was not asked.
struct StageTimes {
  std::optional<double> network;
  std::optional<double> process;   ///< Morvale_process, the network's run included
  std::optional<double> analysis;  ///< Morvale_core_afterProcss and Morvale_core_getresult
};

struct LogLine {
  char priority;  ///< 'D', 'I', 'E', ...
  std::string text;
};

/// All that is known about a frame after it went through the library.
struct FrameReport {
  Camera camera = Camera::kFront;
  int process = 0;  ///< what Morvale_process returned
  int status = 0;
  uint32_t frame_count = 0;
  bool gated = false;  ///< above the gate: not analysed
  Geometry geometry;
  std::vector<FaceRect> camera_faces;
  std::vector<FaceRect> person_boxes;  ///< the first personCount boxes; what lies behind them is stale
  PersonWholeMeta record{};
  /// net_size x seg_factor cells of five scores, as the analysis read them; empty: it read none.
  std::vector<uint8_t> label_map;
  std::optional<NetworkRun> network;  ///< absent: the network was not asked
  FrameTimes times;
  std::vector<LogLine> log;  ///< what the library logged since the frame before
};

/// How long the stages took here.
StageTimes measured_times(const FrameReport& report);
/// The same where a recording answered for the network: its run is as long as it was on the device, or not
/// known.
StageTimes replayed_times(const FrameReport& report, std::optional<double> recorded_network_ms);

/// One camera session, from Morvale_core_init to Morvale_core_deinit. The library keeps its state per
/// process: never have two at a time.
class CameraService {
 public:
  /// Opens the camera's model. Throws RunError when it does not open.
  explicit CameraService(Camera camera);

  /// A session as it was recorded: the model is not loaded when open_result is -1, and one that does not open
  /// is no error here, since the recorded frames then failed too.
  explicit CameraService(const morvale::session::SessionInfo& recorded);

  ~CameraService();
  CameraService(const CameraService&) = delete;
  CameraService& operator=(const CameraService&) = delete;

  /// Sends one frame through. `faces`: at most morvale::kMaxFaces.
  FrameReport analyze(const Frame& frame, const std::vector<FaceRect>& faces);

  /// Sends one frame through as it was delivered when it was recorded. Without pixels its bytes are zero.
  FrameReport replay(const morvale::session::FrameInput& input);

  /// What the runtime's open returned here; -1: no model was loaded.
  int32_t open_result() const { return open_result_; }

  /// The pixels of the last frame, with what the library has drawn into them at higher debug levels.
  std::span<const uint8_t> planes() const { return planes_.bytes(); }

 private:
  int load_model(int32_t camera_type);
  FrameReport run(bool after_process, const std::optional<morvale::session::LaterRecord>& later = {});
  void change_record(const morvale::session::LaterRecord& later);
  static void keep_log_line(int priority, const char* text, void* service);

  MorvaleData_t data_{};
  PlaneBytes planes_;  ///< the library draws into the frame at higher debug levels: it gets a copy
  PlaneBytes chroma_;  ///< where the chroma plane did not follow the luma plane
  PlaneBytes later_;   ///< where the analysis draws when the record changed before it
  std::vector<LogLine> log_;
  MorvaleCore core_;
  int32_t open_result_ = -1;
  std::optional<RuntimeProbe> probe_;
};

/// The folder of the neural runtime's models: the one given, else $VEXA_MODEL_DIR, else the cache folder.
std::string model_folder(const std::optional<std::string>& given);

/// Points the neural runtime at model_folder(given). Throws UsageError when a given folder does not exist,
/// RunError when the folder holds no model.
void choose_model_folder(const std::optional<std::string>& given);

}  // namespace tool
