#include "service/frame_input.h"

#include <algorithm>
#include <filesystem>

#include "common/command.h"
#include "common/input_file.h"
#include "pictures/opencv_module.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

bool is_raw(const std::string& path) { return fs::path(path).extension() == ".nv21"; }

bool is_video(const std::string& path) {
  constexpr std::string_view kEndings[] = {".mp4", ".mov", ".mkv", ".avi", ".webm", ".m4v", ".y4m"};
  return std::find(std::begin(kEndings), std::end(kEndings), fs::path(path).extension().string()) !=
         std::end(kEndings);
}

/// What is no single picture goes through one session, frame by frame.
void check_single(const std::string& path) {
  std::error_code error;
  if (!fs::exists(path, error)) return;
  if (fs::is_directory(path, error))
    throw UsageError(path + " is a folder; morvale replay takes recordings and folders of pictures.");
  if (is_video(path)) throw UsageError(path + " is a video; morvale replay takes videos.");
}

/// Size and stride of a raw frame, checked against the file's length. The planes are left empty.
Frame raw_layout(const std::string& path, const FrameShape& flags) {
  const FrameShape named = shape_from_name(path);
  const std::optional<FrameSize> size = flags.size ? flags.size : named.size;
  if (!size)
    throw UsageError(path +
                     ": the size of a raw frame is unknown; pass --size WxH or name the file NAME_WxH.nv21.");
  check_frame_size(path, *size);
  Frame frame;
  frame.input = path;
  frame.width = size->width;
  frame.height = size->height;
  frame.stride = checked_stride(path, *size, flags.stride ? flags.stride : named.stride);
  const uint64_t expected = uint64_t(frame.stride) * uint64_t(frame.height) * 3 / 2;
  const std::optional<uint64_t> found = file_length(path);
  if (found != expected)
    throw UsageError(path + ": a frame of " + text_of(*size) + " with stride " +
                     std::to_string(frame.stride) + " takes " + std::to_string(expected) +
                     " bytes but the file has " + (found ? std::to_string(*found) : "no length") +
                     "; check --size and --stride or the file.");
  return frame;
}

Frame read_raw(const std::string& path, const FrameShape& flags) {
  Frame frame = raw_layout(path, flags);
  frame.nv21 = read_bytes(path, uint64_t(frame.stride) * uint64_t(frame.height) * 3 / 2);
  return frame;
}

}  // namespace

FrameSize parse_size(const std::string& text) {
  const FrameSize size = parse_size_flag("--size", text);
  check_frame_size("--size", size);
  return size;
}

void check_input(const std::string& path, const FrameShape& flags) {
  check_single(path);
  check_readable(path);
  if (is_raw(path))
    raw_layout(path, flags);
  else if (!opencv().is_picture(path))
    throw UsageError(path +
                     ": not a picture that can be read; give JPEG, PNG or the like, or a raw frame *.nv21.");
}

Frame read_input(const std::string& path, const FrameShape& flags) {
  return is_raw(path) ? read_raw(path, flags) : opencv().photograph_frame(path, flags);
}

}  // namespace tool
