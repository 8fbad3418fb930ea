/// Sizes of pictures, as flags and file names state them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tool {

constexpr int kLargestSide = 16384;

struct FrameSize {
  int width = 0, height = 0;

  bool operator==(const FrameSize&) const = default;
  int64_t pixels() const { return int64_t{width} * height; }
};

/// "1920x1080".
std::string text_of(FrameSize size);

/// The value of a size flag: two sides of 1 to kLargestSide. Throws UsageError, which names the flag.
FrameSize parse_size_flag(const std::string& flag, const std::string& text);

/// Throws UsageError, which begins with `what`, for a size that no NV21 frame has: both sides must be even.
void check_frame_size(const std::string& what, FrameSize size);

/// The stride to use: the one given, else the width. Throws UsageError for one that is shorter, or too long.
int checked_stride(const std::string& path, FrameSize size, std::optional<int> given);

/// What the flags say about all inputs. For raw frames it is what the file holds, and wins over the file's
/// name; for photographs it is what the frame shall become.
struct FrameShape {
  std::optional<FrameSize> size;
  std::optional<int> stride;
};

/// Size and stride from a raw frame's name, "..._1920x1080_s2048.nv21" or "..._1920x1080.nv21". Absent when
/// the name does not end so.
FrameShape shape_from_name(const std::string& path);

}  // namespace tool
