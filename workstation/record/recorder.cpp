#include "record/recorder.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>
#include <string_view>
#include <system_error>

#include <morvale/core/globals.h>
#include "core/frame.h"
#include "record/file_limit.h"
#include "record/next_symbol.h"
#include "record/thin_frame.h"
#include "session/build_note.h"
#include "session/frame_files.h"

namespace morvale::record {
namespace {

namespace fs = std::filesystem;
using session::BundleError;

std::string_view setting(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr ? value : "";
}

/// Claims the first free number, so that processes may share the folder.
fs::path new_session_folder() {
  const fs::path folder(setting("VEXA_RECORD_DIR"));
  if (folder.empty()) throw BundleError("VEXA_RECORD_DIR is not set");
  std::error_code error;
  fs::create_directories(folder, error);
  for (int number = 1; !error; ++number) {
    char name[32];
    std::snprintf(name, sizeof name, "session-%04d", number);
    if (fs::create_directory(folder / name, error)) return folder / name;
  }
  throw BundleError(folder.string() + ": " + error.message());
}

int32_t library_int(const char* name) {
  const void* variable = library_variable(name);
  if (variable == nullptr) throw BundleError(std::string(name) + " of the library cannot be found");
  int32_t value;
  std::memcpy(&value, variable, sizeof value);
  return value;
}

/// Of a record what both Morvale_process and the analysis read, and may find different.
session::LaterRecord shared_part(const MorvaleData_t& record) {
  return {record.cameraType, record.width, record.height, record.stride, record.yPlane != nullptr};
}

/// Whether Morvale_process will look at the frame's planes. Those of other frames need not be mapped.
bool will_be_read(const MorvaleCore& core, const MorvaleData_t& record) {
  const bool ready = core.status != -1 && core.status != 1 && core.status != 2;
  return ready && !(record.gateLevel > kGateLimit);
}

session::ChromaPlace chroma_place(const MorvaleData_t& record) {
  using enum session::ChromaPlace;
  if (record.uvPlane == record.yPlane) return kFound;
  return record.uvPlane == record.yPlane + luma_plane_bytes(record) ? kBehind : kApart;
}

/// Copies what of the planes may be read to where the recorded pixels have it; what lies between is zero.
void copy_pixels(const Frame& frame, session::FrameInput& input) {
  std::vector<uint8_t>& pixels = input.nv21;
  pixels.resize(session::pixel_bytes(input));
  auto rest = std::copy(frame.luma.data, frame.luma.end, pixels.begin());
  if (input.chroma == session::ChromaPlace::kApart)
    rest = std::copy(frame.chroma.data, frame.chroma.end, rest);
  std::fill(rest, pixels.end(), uint8_t{0});
}

}  // namespace

Recorder& recorder() {
  static Recorder* const only =
      new Recorder;  // never destroyed: a caller may still deliver frames while exiting
  return *only;
}

template <class Step>
void Recorder::guarded(Step step) noexcept {
  if (recording_ && owner_ != getpid()) {  // behind a fork: the files are the parent's
    recording_ = frame_open_ = false;
    writer_.reset();
  }
  if (!recording_) return;
  const auto stop = [&](const char* reason) {
    recording_ = frame_open_ = false;
    writer_.reset();
    if (!told_) say(reason);
    told_ = true;
  };
  try {
    step();
  } catch (const std::exception& error) {
    char text[1024];
    std::snprintf(text, sizeof text, "%s; nothing more of this session is recorded", error.what());
    stop(text);
  } catch (...) {
    stop("nothing more of this session is recorded");
  }
}

void Recorder::session_begins(const MorvaleCore& core) noexcept {
  session_ends(core);  // a caller may begin anew without having ended
  recording_ = true;
  owner_ = getpid();
  guarded([&] {
    if (setting("VEXA_RECORD_DIR").empty()) throw BundleError("VEXA_RECORD_DIR is not set");
    const std::string_view frames = setting("VEXA_RECORD_FRAMES");
    pixels_ = frames == "0" ? Pixels::kNone : frames == "thin" ? Pixels::kThin : Pixels::kAll;
    keep_labels_ = setting("VEXA_RECORD_LABELS") == "1";
  });
}

void Recorder::frame_begins(const MorvaleCore& core) noexcept {
  guarded([&] {
    if (frame_open_) write(core, core.result);
    if (core.inputData == nullptr) return;
    take_frame(core);
    output_.process_result = 0;
    output_.execute_result.reset();
    output_.network_ms.reset();
    output_.logits.clear();
    output_.labels.clear();
    frame_open_ = true;
  });
}

/// Takes the pixels before the library runs: it may draw into the luma plane.
void Recorder::take_frame(const MorvaleCore& core) {
  const MorvaleData_t& record = *core.inputData;
  input_.record = record;
  input_.has_planes = record.yPlane != nullptr && record.uvPlane != nullptr;
  input_.chroma = chroma_place(record);
  input_.after_process = false;
  input_.later.reset();
  input_.thin.reset();
  input_.nv21.clear();
  if (pixels_ == Pixels::kNone || !will_be_read(core, record)) return;
  if (pixels_ == Pixels::kThin && library_int("VISUALDEBUG") < 1) {
    input_.thin = thin_frame(record, input_, library_int("PADSIZE"));
  } else if (const std::optional<Frame> frame = usable_frame(record)) {
    copy_pixels(*frame, input_);
  }
}

void Recorder::executed(int32_t result, const float* scores, int32_t pad_size, double milliseconds) noexcept {
  guarded([&] {
    if (!frame_open_) return;
    output_.execute_result = result;
    output_.network_ms = milliseconds;
    const ptrdiff_t side = pad_size / 4;
    if (scores != nullptr) output_.logits.assign(scores, scores + side * side * morvale::kLabels);
  });
}

void Recorder::processed(int32_t result) noexcept { output_.process_result = result; }

void Recorder::analysis_begins(const MorvaleCore& core) noexcept {
  guarded([&] {
    if (!frame_open_ || core.inputData == nullptr) return;
    // The analysis reads these only now, and a caller may have filled them in since Morvale_process.
    const MorvaleData_t& record = *core.inputData;
    MorvaleData_t& taken = input_.record;
    taken.faceCount = record.faceCount;
    std::copy_n(record.faces, morvale::kMaxFaces, taken.faces);
    taken.qermHint = record.qermHint;
    taken.isUDC = record.isUDC;
    input_.after_process = true;
    if (const auto now = shared_part(record); now != shared_part(taken)) input_.later = now;
    if (keep_labels_ && core.frameCount > 0) take_label_map(core);
  });
}

void Recorder::take_label_map(const MorvaleCore& core) {
  const bool front = core.inputData->cameraType == morvale::kFrontCamera;
  const void* ring = library_variable(front ? "N_segResult_Front" : "N_segResult_Back");
  if (ring == nullptr) throw BundleError("the library's label maps cannot be found");
  const uint8_t* map = static_cast<const uint8_t*>(ring) + library_int("N0") * morvale::kRingSlotBytes;
  output_.labels.assign(map, map + library_int("NETSIZE") * core.segFactor * morvale::kLabels);
}

void Recorder::frame_ends(const MorvaleCore& core, const PersonWholeMeta& result) noexcept {
  guarded([&] {
    if (frame_open_) write(core, result);
  });
}

void Recorder::session_ends(const MorvaleCore& core) noexcept {
  frame_ends(core, core.result);
  recording_ = false;
  writer_.reset();
}

void Recorder::write(const MorvaleCore& core, const PersonWholeMeta& result) {
  frame_open_ = false;
  const FileLimitHeldBack while_writing;
  if (writer_ == nullptr) open_bundle(core);
  output_.result = result;
  input_.record.yPlane = input_.record.uvPlane = nullptr;
  writer_->add(input_, output_);
}

/// Only now, since the model's geometry is not known before.
void Recorder::open_bundle(const MorvaleCore& core) {
  session::SessionInfo info;
  info.camera_type = input_.record.cameraType;
  info.pad_size = library_int("PADSIZE");
  info.net_size = library_int("NETSIZE");
  info.open_result = core.status;
  info.debug_level = library_int("VISUALDEBUG");
  info.made_by = "libvexa_record " MORVALE_VERSION;
  info.library = session::library_identity();
  // What is to fit on a phone is also compressed there, at the level that costs least.
  const int compression = pixels_ == Pixels::kThin ? 1 : 0;
  writer_ = std::make_unique<session::BundleWriter>(new_session_folder(), info, compression);
}

}  // namespace morvale::record
