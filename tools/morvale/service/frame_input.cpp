#include "service/frame_input.h"

#include <algorithm>
#include <filesystem>
#include <limits>
#include <opencv2/imgcodecs.hpp>

#include <morvale/morvale.h>
#include "common/command.h"
#include "pictures/picture_decoder.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

bool is_raw(const std::string& path) { return fs::path(path).extension() == ".nv21"; }

void check_frame_size(const std::string& what, FrameSize size) {
  const auto usable = [](int side) { return side >= 2 && side <= kLargestSide && side % 2 == 0; };
  if (!usable(size.width) || !usable(size.height))
    throw UsageError(what + ": the size " + text_of(size) +
                     " cannot be an NV21 frame; both sides must be even, 2 to " +
                     std::to_string(kLargestSide) + ".");
}

/// The stride to use, checked: the library counts the bytes of a frame in 32 bits.
int checked_stride(const std::string& path, FrameSize size, std::optional<int> given) {
  const int stride = given.value_or(size.width);
  const std::string named = path + ": the stride " + std::to_string(stride);
  if (stride < size.width)
    throw UsageError(named + " is smaller than the width " + std::to_string(size.width) +
                     "; give a larger --stride.");
  if (int64_t{stride} * size.height * 3 / 2 > std::numeric_limits<int32_t>::max())
    throw UsageError(named + " makes a frame of more than 2 GiB; give a smaller --stride.");
  return stride;
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

/// Spreads packed NV21 rows to the frame's stride. The bytes between the rows are zero.
void set_rows(Frame& frame, const std::vector<uint8_t>& packed) {
  const auto width = static_cast<size_t>(frame.width), stride = static_cast<size_t>(frame.stride);
  const auto rows = static_cast<size_t>(frame.height) * 3 / 2;
  frame.nv21.assign(stride * rows, 0);
  for (size_t row = 0; row < rows; ++row)
    std::copy_n(packed.data() + row * width, width, frame.nv21.data() + row * stride);
}

}  // namespace

FrameSize parse_size(const std::string& text) {
  const FrameSize size = parse_size_flag("--size", text);
  check_frame_size("--size", size);
  return size;
}

void check_input(const std::string& path, const FrameShape& flags) {
  check_readable(path);
  if (is_raw(path))
    raw_layout(path, flags);
  else if (!cv::haveImageReader(path))
    throw UsageError(path +
                     ": not a picture that can be read; give JPEG, PNG or the like, or a raw frame *.nv21.");
}

Frame read_input(const std::string& path, const FrameShape& flags) {
  if (is_raw(path)) return read_raw(path, flags);
  return frame_from_bgr(path, flags.size ? decode_photograph(path, *flags.size) : decode_photograph(path),
                        flags.stride);
}

Frame frame_from_bgr(const std::string& name, const cv::Mat& bgr, std::optional<int> stride) {
  // NV21 has one chroma pair for each 2 x 2 block: an odd last column or row is dropped.
  const FrameSize size{bgr.cols & ~1, bgr.rows & ~1};
  check_frame_size(name, size);
  const cv::Mat even = bgr(cv::Rect(0, 0, size.width, size.height)).clone();
  Frame frame;
  frame.input = name;
  frame.width = size.width;
  frame.height = size.height;
  frame.stride = checked_stride(name, size, stride);
  std::vector<uint8_t> packed(even.total() * 3 / 2);
  BGRtoNV21(even.data, packed.data(), size.width, size.height);
  set_rows(frame, packed);
  return frame;
}

}  // namespace tool
