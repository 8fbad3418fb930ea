#include "camera_service.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "command.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

constexpr int32_t kBackCamera = 0;

Geometry geometry_of(const MorvaleCore& core, const Frame& frame) {
  Geometry geometry;
  geometry.width = frame.width;
  geometry.height = frame.height;
  geometry.stride = frame.stride;
  geometry.pad_size = PADSIZE;
  geometry.net_size = NETSIZE;
  int table_factor = 0;
  calcSegFactor(frame.height, frame.width, geometry.shrunk_height, geometry.shrunk_width, table_factor);
  geometry.seg_factor = core.segFactor;
  geometry.scale_ratio = core.scaleRatio;
  return geometry;
}

/// The map that the last analysis read: Morvale_core_afterProcss has moved its slot to N1.
std::vector<uint8_t> analysed_label_map(Camera camera, const Geometry& geometry) {
  const uint8_t* ring = camera == Camera::kFront ? N_segResult_Front : N_segResult_Back;
  const uint8_t* slot = ring + N1 * kRingSlotBytes;
  return {slot, slot + geometry.net_size * geometry.seg_factor * kLabels};
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

CameraService::CameraService(Camera camera) : camera_(camera) {
  data_.cameraType = camera == Camera::kFront ? kFrontCamera : kBackCamera;
  core_.Morvale_core_init(&data_);
  if (core_.Morvale_core_setModel(data_.cameraType) == 1) return;
  core_.Morvale_core_deinit();
  throw RunError(
      "the model did not open; make it anew with ./dev network or name its folder with --model-dir.");
}

CameraService::~CameraService() { core_.Morvale_core_deinit(); }

void CameraService::deliver(const Frame& frame, const std::vector<FaceRect>& faces) {
  planes_ = frame.nv21;
  data_.width = frame.width;
  data_.height = frame.height;
  data_.stride = frame.stride;
  data_.yPlane = planes_.data();
  data_.uvPlane = planes_.data();  // equal pointers: the chroma plane follows the luma plane
  data_.faceCount = static_cast<int32_t>(std::min(faces.size(), size_t{kMaxFaces}));
  std::copy_n(faces.begin(), data_.faceCount, data_.faces);
}

FrameReport CameraService::analyze(const Frame& frame, const std::vector<FaceRect>& faces) {
  deliver(frame, faces);
  FrameReport report;
  report.camera = camera_;
  report.camera_faces = faces;
  report.process = core_.Morvale_process();
  core_.Morvale_core_afterProcss();
  core_.Morvale_core_getresult(&report.record);
  report.status = core_.status;
  report.frame_count = core_.frameCount;
  report.geometry = geometry_of(core_, frame);
  report.person_boxes.assign(core_.personBoxes,
                             core_.personBoxes + std::clamp(core_.personCount, 0, kMaxFaces));
  report.label_map = analysed_label_map(camera_, report.geometry);
  return report;
}

void choose_model_folder(const std::optional<std::string>& given) {
  const std::string from_environment = environment("VEXA_MODEL_DIR");
  fs::path folder = from_environment.empty() ? cache_folder() : fs::path(from_environment);
  if (given) folder = *given;
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
