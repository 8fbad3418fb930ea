#include "inspect/inspect_source.h"

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <vector>

#include "common/command.h"
#include "session/parts.h"

namespace tool {
namespace {

namespace fs = std::filesystem;
using morvale::session::BundleError;
using morvale::session::BundleReader;
using morvale::session::FrameLine;

constexpr size_t kRecordBytes = sizeof(PersonWholeMeta);

RecordSource open_bundle(const std::string& path) {
  RecordSource source;
  source.name = path;
  source.bundle = std::make_unique<BundleReader>(path);
  for (int frame = 0; frame < source.bundle->frame_count(); ++frame) {
    source.lines.push_back(source.bundle->line(frame));
    source.records.push_back(source.bundle->record(frame));
  }
  return source;
}

/// Nearly four million records: a day and a half of frames.
constexpr size_t kMostBytes = 1 << 30;

std::string content_of(std::istream& stream, const std::string& name) {
  std::string bytes;
  for (std::vector<char> piece(1 << 20); stream;) {
    stream.read(piece.data(), std::ssize(piece));
    bytes.append(piece.data(), static_cast<size_t>(stream.gcount()));
    if (bytes.size() > kMostBytes) throw UsageError(name + " holds more than 1 GiB of records; cut it up.");
  }
  return bytes;
}

RecordSource open_bare_records(const std::string& path) {
  const std::string name = path == "-" ? "standard input" : path;
  std::string bytes;
  if (path == "-") {
    bytes = content_of(std::cin, name);
  } else {
    std::ifstream file(path, std::ios::binary);
    if (!file)
      throw UsageError(path + " cannot be read; name a session bundle or a file of 288-byte records.");
    bytes = content_of(file, name);
  }
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
  const bool packed = fs::path(path).extension() == morvale::session::kPackedExtension;
  if (!packed && !fs::is_directory(path, error)) return open_bare_records(path);
  try {
    return open_bundle(path);
  } catch (const BundleError& failure) {
    throw UsageError(std::string(failure.what()) + ".");
  }
}

}  // namespace tool
