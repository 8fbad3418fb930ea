#include "core/frame.h"

#include <limits>

namespace morvale {
namespace {

constexpr int64_t kMaxSide = 1 << 23;  // a Q8 position has 23 bits left of the point
constexpr int64_t kMaxBytes = std::numeric_limits<int32_t>::max();

}  // namespace

int64_t luma_plane_bytes(const MorvaleData_t& record) {
  const int64_t height = record.height, stride = row_bytes(record);
  if (record.yPlane == nullptr || height < 1 || stride < 1) return 0;
  if (stride >= kMaxSide || height >= kMaxSide || stride * height > kMaxBytes) return 0;
  return stride * height;
}

std::optional<Frame> usable_frame(const MorvaleData_t& record) {
  const int64_t width = record.width, height = record.height, stride = row_bytes(record);
  if (record.yPlane == nullptr || record.uvPlane == nullptr) return std::nullopt;
  if (width < 1 || height < 1 || stride < width) return std::nullopt;
  if (stride >= kMaxSide || height >= kMaxSide) return std::nullopt;
  if (stride * height + stride * (height / 2) > kMaxBytes) return std::nullopt;

  // The stride only finds the chroma plane. The shrink reads rows of `width` bytes, so a padded frame comes
  // out slanted; callers hand over packed frames and the rule stays.
  const uint8_t* luma = record.yPlane;
  const uint8_t* luma_end = luma + stride * height;
  const uint8_t* chroma = record.uvPlane != record.yPlane ? record.uvPlane : luma_end;
  const uint8_t* chroma_end = chroma + width * (height / 2);
  if (chroma == luma_end) luma_end = chroma_end;  // one block: luma may read on into it
  return Frame{record.width, record.height, {luma, width, luma_end}, {chroma, width, chroma_end}};
}

}  // namespace morvale
