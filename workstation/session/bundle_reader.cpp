#include <algorithm>
#include <cstdlib>
#include <utility>

#include "session/compression.h"
#include "session/frame_files.h"
#include "session/hash.h"
#include "session/metadata.h"
#include "session/npy.h"
#include "session/parts.h"

namespace morvale::session {
namespace {

namespace fs = std::filesystem;

constexpr size_t kRecordBytes = sizeof(PersonWholeMeta);

std::string frame_name(size_t index) { return "frame " + std::to_string(index); }

SessionInfo read_session(const FilePart& file) {
  constexpr uintmax_t kMostBytes = 4 << 20;  // made_by may hold a command line, of which systems take 2 MB
  const std::string text = read_text(file, kMostBytes);
  try {
    return parse_session(text);
  } catch (const std::runtime_error& error) {
    throw BundleError(file.name + ": " + error.what());
  }
}

/// One frame as metadata.jsonl has it.
struct ListedFrame {
  FrameLine line;
  std::string damage;  ///< why it cannot be used; empty: it can
};

struct Metadata {
  std::vector<ListedFrame> frames;
  bool cut = false;  ///< the file ends within a line
};

Metadata read_metadata(const FilePart& file, Damage damage) {
  Metadata metadata;
  metadata.cut = read_lines(file, [&](const std::string& line) {
    const size_t index = metadata.frames.size();
    ListedFrame& frame = metadata.frames.emplace_back();
    try {
      frame.line = parse_frame(static_cast<int>(index), line);
    } catch (const std::runtime_error& error) {
      frame.damage = file.name + ": " + frame_name(index) + ": " + error.what();
      if (damage == Damage::kRefuse) throw BundleError(frame.damage);
    }
  });
  return metadata;
}

/// Whether one of these names of files is that of frame `first` or a later one.
bool holds_frames_from(const std::vector<std::string>& names, size_t first) {
  return std::any_of(names.begin(), names.end(), [&](const std::string& name) {
    char* end = nullptr;
    const unsigned long long number = std::strtoull(name.c_str(), &end, 10);
    return end != name.c_str() && number >= first;
  });
}

/// Runs `action`; its BundleError names the file already and gets the frame.
template <class Action>
auto about(size_t index, Action action) {
  try {
    return action();
  } catch (const BundleError& error) {
    throw BundleError(std::string(error.what()) + " (" + frame_name(index) + ")");
  }
}

}  // namespace

struct BundleReader::Files {
  std::string name;
  std::unique_ptr<Parts> parts;
  SessionInfo info;
  std::vector<ListedFrame> frames;
  std::vector<PersonWholeMeta> records;
  std::string warning;

  Files(const fs::path& bundle, Damage damage)
      : name(bundle.string()), parts(open_parts(bundle)), info(read_session(parts->find(kSessionFile))) {
    Metadata metadata = read_metadata(parts->find(kMetadataFile), damage);
    frames = std::move(metadata.frames);
    const bool extra_record = read_records();
    for (size_t i = 0; i < frames.size(); ++i) check_frame(i, damage);
    const size_t next = frames.size();
    const auto begun = [&](const char* folder) { return holds_frames_from(parts->names(folder), next); };
    if (metadata.cut || extra_record || begun("frames") || begun("logits") || begun("labels")) {
      warning = parts->path(kMetadataFile) + ": " + frame_name(next) +
                " was still being written when the recording ended; it is left out";
    }
  }

  /// Returns whether the file goes on behind the last frame. A crash leaves at most one record there, since
  /// each is followed by its line; more mean that lines were lost.
  bool read_records() {
    const FilePart file = parts->find(kRecordsFile);
    const uintmax_t size = file.size, count = frames.size();
    if (size < count * kRecordBytes) {
      throw BundleError(file.name + ": " + frame_name(size / kRecordBytes) + ": the file ends here, " +
                        kMetadataFile + " goes on");
    }
    if (size > (count + 1) * kRecordBytes) {
      throw BundleError(parts->path(kMetadataFile) + ": " + frame_name(count) + ": the file ends here, " +
                        kRecordsFile + " goes on");
    }
    records.resize(count);
    if (count > 0) read_bytes(file, 0, records.data(), count * kRecordBytes);
    return size > count * kRecordBytes;
  }

  void check_frame(size_t index, Damage damage) {
    ListedFrame& frame = frames[index];
    if (!frame.damage.empty()) return;
    try {
      check_record(index);
      check_files(index);
    } catch (const BundleError& error) {
      if (damage == Damage::kRefuse) throw;
      frame.damage = error.what();
    }
  }

  void check_record(size_t index) const {
    const std::string& hash = frames[index].line.hashes.record;
    if (!hash.empty() && hash_text(&records[index], kRecordBytes) != hash)
      refuse(index, kRecordsFile, "the record is not the one that was recorded");
  }

  /// All that can be said without reading pixels and scores.
  void check_files(size_t index) const {
    const FrameLine& line = frames[index].line;
    if (is_plain(line.pixels))
      expect_size(index, line.pixels, pixel_bytes(line.input));
    else if (!line.pixels.empty())
      check_unpacked(index, line.pixels);
    if (!line.thin.empty()) check_unpacked(index, line.thin);
    if (is_plain(line.labels)) check_label_map(index, sized(index, line.labels));
    for (const std::string* file : {&line.labels, &line.logits})
      if (!file->empty()) check_packed(index, *file, 2 * most_npy_bytes(logit_count(info)));
    if (line.logits.empty()) return;
    if (line.execute_result.value_or(1) != 0)
      refuse(index, kMetadataFile, "has scores of a run that gave none");
    if (!is_plain(line.logits)) return;
    const NpyHead head = about(index, [&] {
      const FilePart file = parts->find(line.logits);
      return read_npy_head(file.name, file.size, [&](uintmax_t offset, void* data, size_t size) {
        read_bytes(file, offset, data, size);
      });
    });
    check_shape(index, head.shape);
  }

  /// Whether a frame has a file, and it holds what it stands for as it is.
  static bool is_plain(const std::string& file) {
    return !file.empty() && !file.ends_with(kCompressedEnding);
  }

  /// A small file must not stand for a picture that takes all memory, nor a large one for few samples.
  void check_unpacked(size_t index, const std::string& file) const {
    const uint64_t whole = pixel_bytes(frames[index].line.input);
    if (whole == 0 || whole > kMostUnpackedPixels)
      refuse(index, file, "a picture of " + std::to_string(whole) + " bytes is not taken from it");
    check_packed(index, file, 2 * std::max(whole, kMostThinBytes));
  }

  /// Nobody's compression makes twice as much of anything.
  void check_packed(size_t index, const std::string& file, uint64_t most) const {
    const uintmax_t size = sized(index, file);
    if (size > most)
      refuse(index, file, "holds " + std::to_string(size) + " bytes, which no such file needs");
  }

  void check_shape(size_t index, const std::vector<int32_t>& shape) const {
    if (shape != std::vector<int32_t>{info.net_size, info.net_size, morvale::kLabels})
      refuse(index, frames[index].line.logits, "the scores are not those of the session's model");
  }

  void check_label_map(size_t index, uintmax_t size) const {
    if (!is_label_map(info, size))
      refuse(index, frames[index].line.labels, std::to_string(size) + " bytes are no label map");
  }

  void expect_size(size_t index, const std::string& file, uint64_t expected) const {
    const uintmax_t size = sized(index, file);
    if (size != expected || expected == 0) refuse_size(index, file, size, expected);
  }

  [[noreturn]] void refuse_size(size_t index, const std::string& file, uintmax_t size,
                                uint64_t expected) const {
    refuse(index, file, "holds " + std::to_string(size) + " bytes, not " + std::to_string(expected));
  }

  uintmax_t sized(size_t index, const std::string& file) const {
    return about(index, [&] { return parts->find(file).size; });
  }

  [[noreturn]] void refuse(size_t index, const std::string& file, const std::string& what) const {
    throw BundleError(parts->path(file) + ": " + frame_name(index) + ": " + what);
  }

  size_t checked(int index) const {
    if (index < 0 || static_cast<size_t>(index) >= frames.size()) {
      throw BundleError(name + ": there is no frame " + std::to_string(index) + " among " +
                        std::to_string(frames.size()));
    }
    return static_cast<size_t>(index);
  }

  /// A file's bytes as they are stored, held to their hash.
  std::vector<uint8_t> stored_bytes(size_t index, const std::string& file, const std::string& hash) const {
    if (file.empty()) return {};
    std::vector<uint8_t> stored = about(index, [&] { return read_all(parts->find(file)); });
    if (!hash.empty() && hash_text(stored.data(), stored.size()) != hash)
      refuse(index, file, "the bytes are not those that were recorded");
    return stored;
  }

  /// What a file stands for: at most `most` bytes.
  std::vector<uint8_t> bytes(size_t index, const std::string& file, const std::string& hash,
                             uint64_t most) const {
    std::vector<uint8_t> stored = stored_bytes(index, file, hash);
    if (file.empty() || is_plain(file)) return stored;
    try {
      return decompress(stored, most);
    } catch (const std::runtime_error& error) {
      refuse(index, file, error.what());
    }
  }

  const FrameLine& usable(size_t index) const {
    if (!frames[index].damage.empty()) throw BundleError(frames[index].damage);
    return frames[index].line;
  }

  ThinFrame thin_frame(size_t index) const {
    const FrameLine& line = frames[index].line;
    const std::vector<uint8_t> content = bytes(index, line.thin, line.hashes.thin, kMostThinBytes);
    try {
      return parse_thin(content, pixel_bytes(line.input));
    } catch (const std::runtime_error& error) {
      refuse(index, line.thin, error.what());
    }
  }

  std::vector<uint8_t> pixels(size_t index) const {
    const FrameLine& line = frames[index].line;
    const uint64_t whole = pixel_bytes(line.input);
    if (!line.thin.empty()) return thick_pixels(thin_frame(index), whole);
    std::vector<uint8_t> pixels = bytes(index, line.pixels, line.hashes.pixels, whole);
    if (!line.pixels.empty() && pixels.size() != whole) refuse_size(index, line.pixels, pixels.size(), whole);
    return pixels;
  }

  std::vector<float> scores(size_t index) const {
    const std::string& file = frames[index].line.logits;
    if (file.empty()) return {};
    const std::vector<uint8_t> content =
        bytes(index, file, frames[index].line.hashes.logits, most_npy_bytes(logit_count(info)));
    NpyArray array = about(index, [&] { return parse_npy(parts->path(file), content); });
    check_shape(index, array.shape);
    return std::move(array.values);
  }

  std::vector<uint8_t> label_map(size_t index) const {
    std::vector<uint8_t> map =
        bytes(index, frames[index].line.labels, frames[index].line.hashes.labels, logit_count(info));
    if (!frames[index].line.labels.empty()) check_label_map(index, map.size());
    return map;
  }
};

BundleReader::BundleReader(const fs::path& bundle, Damage damage)
    : files_(std::make_unique<Files>(bundle, damage)) {}

BundleReader::~BundleReader() = default;

const SessionInfo& BundleReader::info() const { return files_->info; }
int BundleReader::frame_count() const { return static_cast<int>(files_->frames.size()); }
const std::string& BundleReader::warning() const { return files_->warning; }
const FrameLine& BundleReader::line(int index) const { return files_->frames[files_->checked(index)].line; }
const FrameInput& BundleReader::metadata(int index) const { return line(index).input; }
const PersonWholeMeta& BundleReader::record(int index) const {
  return files_->records[files_->checked(index)];
}
bool BundleReader::has_pixels(int index) const { return !line(index).pixels.empty() || is_thin(index); }
bool BundleReader::is_thin(int index) const { return !line(index).thin.empty(); }
ThinFrame BundleReader::thin_frame(int index) const { return files_->thin_frame(files_->checked(index)); }
std::optional<int32_t> BundleReader::execute_result(int index) const { return line(index).execute_result; }

FrameInput BundleReader::input(int index) const {
  const size_t i = files_->checked(index);
  FrameInput input = files_->usable(i).input;
  input.nv21 = files_->pixels(i);
  return input;
}

FrameOutput BundleReader::output(int index) const {
  const size_t i = files_->checked(index);
  const FrameLine& line = files_->usable(i);
  FrameOutput output;
  output.process_result = line.process_result;
  output.execute_result = line.execute_result;
  output.result = files_->records[i];
  output.labels = files_->label_map(i);
  output.network_ms = line.network_ms;
  output.logits = files_->scores(i);
  return output;
}

std::optional<std::string> BundleReader::damage(int index) const {
  const size_t i = files_->checked(index);
  try {
    input(index);
    output(index);
    files_->stored_bytes(i, line(index).preview, line(index).hashes.preview);
    return std::nullopt;
  } catch (const BundleError& error) {
    return error.what();
  }
}

}  // namespace morvale::session
