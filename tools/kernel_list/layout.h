/// What the image kernels take and give.
#pragma once

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

}  // namespace kernel_list
