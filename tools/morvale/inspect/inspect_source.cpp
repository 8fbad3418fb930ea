#include "inspect/inspect_source.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "common/command.h"
#include "session/file.h"
#include "session/frame_files.h"

namespace tool {
namespace {

namespace fs = std::filesystem;
using morvale::session::BundleError;
using morvale::session::BundleReader;
using morvale::session::FrameLine;

constexpr size_t kRecordBytes = sizeof(PersonWholeMeta);

/// The lines of the bundle's complete frames, which a reader has found in order.
std::vector<FrameLine> read_lines(const fs::path& folder, int count) {
  std::istringstream text(morvale::session::read_text(folder / morvale::session::kMetadataFile));
  std::vector<FrameLine> lines;
  for (std::string line; static_cast<int>(lines.size()) < count && std::getline(text, line);)
    lines.push_back(morvale::session::parse_frame(static_cast<int>(lines.size()), line));
  return lines;
}

/// The records without pixels and scores, which may be gigabytes.
std::vector<PersonWholeMeta> read_records(const fs::path& folder, int count) {
  std::vector<PersonWholeMeta> records(static_cast<size_t>(count));
  if (count > 0)
    morvale::session::read_bytes(folder / morvale::session::kRecordsFile, 0, records.data(),
                                 records.size() * kRecordBytes);
  return records;
}

RecordSource open_bundle(const std::string& path) {
  RecordSource source;
  source.name = path;
  source.bundle = std::make_unique<BundleReader>(path);
  source.lines = read_lines(path, source.bundle->frame_count());
  source.records = read_records(path, source.bundle->frame_count());
  return source;
}

std::string content_of(std::istream& stream) {
  return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

RecordSource open_bare_records(const std::string& path) {
  std::string bytes;
  if (path == "-") {
    bytes = content_of(std::cin);
  } else {
    std::ifstream file(path, std::ios::binary);
    if (!file)
      throw UsageError(path + " cannot be read; name a session bundle or a file of 288-byte records.");
    bytes = content_of(file);
  }
  const std::string name = path == "-" ? "standard input" : path;
  if (bytes.empty() || bytes.size() % kRecordBytes != 0) {
    throw UsageError(name + " holds " + std::to_string(bytes.size()) +
                     " bytes; records are 288 bytes each, one after another.");
  }
  RecordSource source;
  source.name = name;
  source.records.resize(bytes.size() / kRecordBytes);
  std::memcpy(source.records.data(), bytes.data(), bytes.size());
  return source;
}

}  // namespace

std::optional<Camera> RecordSource::camera() const {
  return bundle ? std::optional(camera_of(bundle->info().camera_type)) : std::nullopt;
}

Camera RecordSource::camera_at(int index, Camera otherwise) const {
  return bundle ? camera_of(lines[static_cast<size_t>(index)].input.analysed_camera_type()) : otherwise;
}

RecordSource open_records(const std::string& path) {
  std::error_code error;
  if (!fs::is_directory(path, error)) return open_bare_records(path);
  try {
    return open_bundle(path);
  } catch (const BundleError& failure) {
    throw UsageError(std::string(failure.what()) + ".");
  }
}

}  // namespace tool
