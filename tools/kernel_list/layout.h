/// What the image kernels take and give.
#pragma once

#include <cstdint>

namespace kernel_list {

/// Packed, nothing before, between or behind the rows.
enum class Layout {
  kNv21,       ///< luma rows, then (height + 1) / 2 rows of `width` bytes with V,U pairs
  kNv12,       ///< the same, U first
  kRgb,        ///< three bytes a pixel
  kBgr,        ///< three bytes a pixel
  kPlanarBgr,  ///< three planes
  kY,          ///< one plane
  kHsv,        ///< three float32 a pixel, of this machine's byte order
};

/// From one row of samples to the next, in the last plane that the layout has.
constexpr int64_t row_bytes(Layout layout, int64_t width) {
  const bool interleaved = layout == Layout::kRgb || layout == Layout::kBgr;
  return width * (layout == Layout::kHsv ? 12 : interleaved ? 3 : 1);
}

constexpr int64_t byte_count(Layout layout, int64_t width, int64_t height) {
  if (layout == Layout::kNv21 || layout == Layout::kNv12) height += (height + 1) / 2;
  return row_bytes(layout, width) * (layout == Layout::kPlanarBgr ? 3 * height : height);
}

}  // namespace kernel_list
