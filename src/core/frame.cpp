#include "core/frame.h"

#include <algorithm>
#include <limits>

namespace morvale {
namespace {

constexpr int64_t kMaxSide = 1 << 23;  // a Q8 position has 23 bits left of the point
constexpr int64_t kMaxBytes = std::numeric_limits<int32_t>::max();

/// Whether a frame can have this size: its byte counts and Q8 positions fit int32.
bool usable_size(int64_t width, int64_t height) {
  return width >= 1 && height >= 1 && width < kMaxSide && height < kMaxSide &&
         width * height + width * (height / 2) <= kMaxBytes;
}

/// The planes of a frame whose chroma plane the stride finds. They may lie in each other's reach: whatever a
/// plane's rows end before, as long as it is the frame's, is read on into.
std::optional<Frame> joined_planes(const MorvaleData_t& record) {
  const int64_t width = record.width, height = record.height, stride = row_bytes(record);
  const int64_t chroma_bytes = width * (height / 2);
  if (stride < 0 || stride * height + chroma_bytes > kMaxBytes) return std::nullopt;
  const uint8_t* luma = record.yPlane;
  const uint8_t* chroma = luma + stride * height;
  const uint8_t* end = luma + std::max(width * height, stride * height + chroma_bytes);
  return Frame{record.width, record.height, {luma, width, end}, {chroma, width, end}};
}

}  // namespace

int64_t luma_plane_bytes(const MorvaleData_t& record) {
  const int64_t width = record.width, height = record.height, stride = record.stride;
  if (record.yPlane == nullptr || height < 1 || height >= kMaxSide) return 0;
  for (const int64_t row : {std::max(stride, width), width}) {
    if (row >= 1 && row < kMaxSide && row * height <= kMaxBytes) return row * height;
  }
  return 0;
}

std::optional<Frame> usable_frame(const MorvaleData_t& record) {
  const int64_t width = record.width, height = record.height;
  if (record.yPlane == nullptr || record.uvPlane == nullptr || !usable_size(width, height)) {
    return std::nullopt;
  }
  // The stride only finds the chroma plane. The shrink reads rows of `width` bytes, so a padded frame comes
  // out slanted; callers hand over packed frames and the rule stays.
  if (record.uvPlane == record.yPlane) return joined_planes(record);
  const uint8_t* luma_end = record.yPlane + luma_plane_bytes(record);
  const uint8_t* chroma_end = record.uvPlane + width * (height / 2);
  if (record.uvPlane == luma_end) luma_end = chroma_end;  // one block: luma may read on into it
  return Frame{
      record.width, record.height, {record.yPlane, width, luma_end}, {record.uvPlane, width, chroma_end}};
}

}  // namespace morvale
