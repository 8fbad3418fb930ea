#include "service/camera_service.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <limits>

#include "common/command.h"
#include "host/log_observer.h"
#include "session/frame_files.h"

namespace tool {
namespace {

namespace fs = std::filesystem;
using morvale::session::ChromaPlace;
using morvale::session::FrameInput;

constexpr int32_t kBackCamera = 0;

Geometry geometry_of(const MorvaleCore& core, const MorvaleData_t& record) {
  Geometry geometry;
  geometry.width = record.width;
  geometry.height = record.height;
  geometry.stride = record.stride == 0 ? record.width : record.stride;
  geometry.pad_size = PADSIZE;
  geometry.net_size = NETSIZE;
  geometry.seg_factor = core.segFactor;
  geometry.scale_ratio = core.scaleRatio;
  int table_factor = 0;
  if (record.width > 0 && record.height > 0 && PADSIZE > 0)
    calcSegFactor(record.height, record.width, geometry.shrunk_height, geometry.shrunk_width, table_factor);
  return geometry;
}

/// The map that the last analysis read: Morvale_core_afterProcss has moved its slot to N1.
std::vector<uint8_t> analysed_label_map(Camera camera, const Geometry& geometry) {
  const uint8_t* ring = camera == Camera::kFront ? N_segResult_Front : N_segResult_Back;
  const uint8_t* slot = ring + N1 * morvale::kRingSlotBytes;
  return {slot, slot + geometry.net_size * geometry.seg_factor * morvale::kLabels};
}

/// Bytes of a frame that the library may read or draw into. At least 1.
size_t touched_bytes(const FrameInput& input) {
  const uint64_t read = morvale::session::pixel_bytes(input);
  const bool readable = read <= uint64_t{std::numeric_limits<int32_t>::max()};
  return std::max({uint64_t{1}, readable ? read : 0, uint64_t(morvale::session::luma_bytes(input.record))});
}

std::string environment(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

fs::path cache_folder() {
  const std::string cache = environment("XDG_CACHE_HOME");
  return (cache.empty() ? fs::path(environment("HOME")) / ".cache" : fs::path(cache)) / "morvale" / "network";
}

bool holds_a_model(const fs::path& folder) {
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error))
    if (entry.path().extension() == ".onnx") return true;
  return false;
}

}  // namespace

StageTimes measured_times(const FrameReport& report) {
  const auto ms = [](auto from, auto to) {
    return std::chrono::duration<double, std::milli>(to - from).count();
  };
  StageTimes times;
  if (report.network) times.network = report.network->ms();
  times.process = ms(report.times.start, report.times.processed);
  times.analysis = ms(report.times.processed, report.times.done);
  return times;
}

StageTimes replayed_times(const FrameReport& report, std::optional<double> recorded_network_ms) {
  StageTimes times = measured_times(report);
  if (!times.network) return times;
  times.process = *times.process - *times.network + recorded_network_ms.value_or(0);
  times.network = recorded_network_ms;
  return times;
}

Camera camera_of(int32_t camera_type) {
  return camera_type == morvale::kFrontCamera ? Camera::kFront : Camera::kBack;
}

int32_t camera_type_of(Camera camera) {
  return camera == Camera::kFront ? morvale::kFrontCamera : kBackCamera;
}

CameraService::CameraService(Camera camera) {
  data_.cameraType = camera_type_of(camera);
  if (load_model(data_.cameraType) == 1) return;
  core_.Morvale_core_deinit();
  morvale_host_observe_log(nullptr, nullptr);
  throw RunError(
      "the model did not open; make it anew with ./dev network or name its folder with --model-dir.");
}

CameraService::CameraService(const morvale::session::SessionInfo& recorded) {
  constexpr int32_t kNoModelLoaded = -1;
  data_.cameraType = recorded.camera_type;
  if (recorded.open_result != kNoModelLoaded) {
    // By its size: the first frame's camera type need not be that of the model that was loaded.
    constexpr int32_t kFrontModelSize = 256;
    load_model(recorded.pad_size == kFrontModelSize ? morvale::kFrontCamera : kBackCamera);
  } else {
    morvale_host_observe_log(keep_log_line, this);
    core_.Morvale_core_init(&data_);
  }
}

CameraService::~CameraService() {
  probe_.reset();
  core_.Morvale_core_deinit();
  morvale_host_observe_log(nullptr, nullptr);
}

int CameraService::load_model(int32_t camera_type) {
  morvale_host_observe_log(keep_log_line, this);
  core_.Morvale_core_init(&data_);
  const int opened = core_.Morvale_core_setModel(camera_type);
  open_result_ = core_.status;
  if (opened == 1) probe_.emplace();
  return opened;
}

void CameraService::keep_log_line(int priority, const char* text, void* service) {
  constexpr char kLetters[] = "??VDIWEFS";
  const char letter = priority >= 0 && priority < 9 ? kLetters[priority] : '?';
  static_cast<CameraService*>(service)->log_.push_back({letter, text});
}

FrameReport CameraService::analyze(const Frame& frame, const std::vector<FaceRect>& faces) {
  planes_.copy(frame.nv21);
  data_.width = frame.width;
  data_.height = frame.height;
  data_.stride = frame.stride;
  data_.yPlane = data_.uvPlane = planes_.data();  // equal pointers: the chroma plane follows the luma plane
  data_.faceCount = static_cast<int32_t>(std::min(faces.size(), size_t{morvale::kMaxFaces}));
  std::copy_n(faces.begin(), data_.faceCount, data_.faces);
  return run(/*after_process=*/true);
}

FrameReport CameraService::replay(const FrameInput& input) {
  data_ = input.record;
  // A frame whose pixels the library does not read has none in the recording.
  if (input.nv21.empty())
    planes_.zeros(touched_bytes(input));
  else
    planes_.copy(input.nv21);
  data_.yPlane = data_.uvPlane = input.has_planes ? planes_.data() : nullptr;
  if (input.has_planes && input.chroma != ChromaPlace::kFound) {
    // A size that is none must not lead out of the planes; nor may the chroma pointer become null.
    const auto luma = std::min(static_cast<size_t>(morvale::session::luma_bytes(data_)), planes_.size());
    chroma_.zeros(planes_.size() - luma + 1);
    if (!input.nv21.empty()) std::copy_n(planes_.data() + luma, planes_.size() - luma, chroma_.data());
    data_.uvPlane = input.chroma == ChromaPlace::kBehind ? planes_.data() + luma : chroma_.data();
  }
  return run(input.after_process, input.later);
}

/// As the caller did between the two calls of a frame. The analysis reads no pixel, but it may draw.
void CameraService::change_record(const morvale::session::LaterRecord& later) {
  data_.cameraType = later.camera_type;
  data_.width = later.width;
  data_.height = later.height;
  data_.stride = later.stride;
  later_.zeros(1 + static_cast<size_t>(VISUALDEBUG >= 1 ? morvale::session::luma_bytes(data_) : 0));
  data_.yPlane = later.has_luma ? later_.data() : nullptr;
}

FrameReport CameraService::run(bool after_process,
                               const std::optional<morvale::session::LaterRecord>& later) {
  FrameReport report;
  report.camera_faces.assign(data_.faces, data_.faces + std::clamp(data_.faceCount, 0, morvale::kMaxFaces));
  using Clock = std::chrono::steady_clock;
  report.times.start = Clock::now();
  report.process = core_.Morvale_process();
  report.times.processed = Clock::now();
  const MorvaleData_t processed = data_;
  if (later) change_record(*later);
  if (after_process) core_.Morvale_core_afterProcss();
  report.times.analysed = Clock::now();
  core_.Morvale_core_getresult(&report.record);
  report.times.done = Clock::now();
  // A gated frame: Morvale_process clears the record and leaves.
  report.gated = report.process == 0 && data_.gateLevel > morvale::kGateLimit;
  report.status = core_.status;
  report.frame_count = core_.frameCount;
  report.camera = camera_of(data_.cameraType);
  report.geometry = geometry_of(core_, processed);
  report.person_boxes.assign(core_.personBoxes,
                             core_.personBoxes + std::clamp(core_.personCount, 0, morvale::kMaxFaces));
  // The analysis leaves at once while no frame was segmented since the start or a gated frame.
  if (after_process && report.frame_count > 0)
    report.label_map = analysed_label_map(report.camera, report.geometry);
  if (probe_) report.network = probe_->take();
  report.log.swap(log_);
  log_.clear();
  return report;
}

std::string model_folder(const std::optional<std::string>& given) {
  const std::string from_environment = environment("VEXA_MODEL_DIR");
  return given ? *given : from_environment.empty() ? cache_folder().string() : from_environment;
}

void choose_model_folder(const std::optional<std::string>& given) {
  const fs::path folder = model_folder(given);
  std::error_code error;
  if (given && !fs::is_directory(folder, error))
    throw UsageError("--model-dir: " + folder.string() +
                     " is not a folder; make the models with ./dev network.");
  if (!holds_a_model(folder))
    throw RunError("there is no model in " + folder.string() +
                   "; make it with ./dev network or name its folder with --model-dir.");
  setenv("VEXA_MODEL_DIR", folder.c_str(), 1);
}

}  // namespace tool
