#include <algorithm>
#include <cmath>
#include <cstdio>
#include <system_error>

#include "session/file.h"
#include "session/frame_files.h"
#include "session/metadata.h"

namespace morvale::session {
namespace {

namespace fs = std::filesystem;

void make_folder(const fs::path& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (error) throw BundleError(folder.string() + ": cannot be made: " + error.message());
}

void new_folder(const fs::path& folder) {
  make_folder(folder);
  std::error_code error;
  const bool empty = fs::is_empty(folder, error);
  if (error) throw BundleError(folder.string() + ": " + error.message());
  if (!empty) throw BundleError(folder.string() + ": is not empty; a bundle needs a folder of its own");
}

std::string numbered(const char* format, int index) {
  char name[32];
  std::snprintf(name, sizeof name, format, index);
  return name;
}

std::string pixel_file_name(int index, const MorvaleData_t& record) {
  return numbered("frames/%06d", index) + "_" + std::to_string(record.width) + "x" +
         std::to_string(record.height) + "_s" + std::to_string(row_bytes(record)) + ".nv21";
}

std::string label_file_name(int index, const SessionInfo& info, size_t bytes) {
  const size_t columns = static_cast<size_t>(info.net_size);
  return numbered("labels/%06d", index) + "_" + std::to_string(columns) + "x" +
         std::to_string(bytes / columns / morvale::kLabels) + "x" + std::to_string(morvale::kLabels) + ".bin";
}

void write_whole(const fs::path& path, const void* data, size_t size) {
  OutputFile file(path);
  file.write(data, size);
  file.close();
}

}  // namespace

struct BundleWriter::Files {
  fs::path folder;
  SessionInfo info;
  OutputFile metadata, records;
  int count = 0;
  bool whole = true;  ///< no frame is half-written

  Files(const fs::path& path, const SessionInfo& session)
      : folder(path), info(session), metadata(folder / kMetadataFile), records(folder / kRecordsFile) {
    make_folder(folder / "frames");
    make_folder(folder / "logits");
    const std::string text = session_text(info);
    parse_session(text);
    // Last and by one rename: where there is a session.json, the other files are there too.
    const fs::path fresh = folder / "session.json.part";
    write_whole(fresh, text.data(), text.size());
    fs::rename(fresh, folder / kSessionFile);
  }

  void check(const FrameInput& input, const FrameOutput& output) const {
    const std::string frame = folder.string() + ": frame " + std::to_string(count) + ": ";
    if (!input.nv21.empty() && input.nv21.size() != pixel_bytes(input)) {
      throw BundleError(frame + std::to_string(input.nv21.size()) + " bytes of pixels do not fit its size");
    }
    if (!output.logits.empty() && output.logits.size() != logit_count(info)) {
      throw BundleError(frame + std::to_string(output.logits.size()) +
                        " scores are not those of the session's model");
    }
    if (!output.labels.empty() && !is_label_map(info, output.labels.size())) {
      throw BundleError(frame + std::to_string(output.labels.size()) +
                        " bytes are no label map of the session's model");
    }
  }

  FrameLine write_files(const FrameInput& input, const FrameOutput& output) {
    FrameLine line;
    line.input = {input.record, input.chroma, input.has_planes, input.after_process, input.later, {}};
    line.process_result = output.process_result;
    line.execute_result = output.execute_result;
    if (output.network_ms && std::isfinite(*output.network_ms)) line.network_ms = output.network_ms;
    if (!input.nv21.empty()) {
      line.pixels = pixel_file_name(count, input.record);
      write_whole(folder / line.pixels, input.nv21.data(), input.nv21.size());
    }
    if (!output.logits.empty()) {
      if (!line.execute_result) line.execute_result = 0;
      line.logits = numbered("logits/%06d.npy", count);
      write_npy(folder / line.logits, std::vector<int32_t>{info.net_size, info.net_size, morvale::kLabels},
                output.logits);
    }
    if (!output.labels.empty()) {
      make_folder(folder / "labels");
      line.labels = label_file_name(count, info, output.labels.size());
      write_whole(folder / line.labels, output.labels.data(), output.labels.size());
    }
    return line;
  }
};

BundleWriter::BundleWriter(const fs::path& folder, const SessionInfo& info) {
  new_folder(folder);
  try {
    files_ = std::make_unique<Files>(folder, info);
  } catch (const std::exception& error) {
    std::error_code ignored;
    fs::remove_all(folder, ignored);  // a folder without a session would stop whoever replays all of them
    if (dynamic_cast<const BundleError*>(&error) != nullptr) throw;
    throw BundleError(folder.string() + ": " + error.what());
  }
}

BundleWriter::~BundleWriter() = default;

void BundleWriter::add(const FrameInput& input, const FrameOutput& output) {
  if (!files_->whole) throw BundleError(files_->folder.string() + ": an earlier frame could not be written");
  files_->check(input, output);
  files_->whole = false;
  const std::string line = frame_text(files_->count, files_->write_files(input, output));
  files_->records.write(&output.result, sizeof output.result);
  files_->metadata.write(line.data(), line.size());
  ++files_->count;
  files_->whole = true;
}

}  // namespace morvale::session
