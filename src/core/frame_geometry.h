/// How a frame fits into the square network input.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "core/numeric.h"

namespace morvale {

/// The shrunk picture and the label-map rows that it fills.
struct FrameGeometry {
  int32_t height, width;
  int32_t seg_factor;
};

/// Label-map rows for a shrunk height: a quarter of it for the 4:3, 16:9 and square or portrait shapes. Every
/// other height gets one fixed value, whatever a quarter of it would be; the output depends on it.
inline int32_t seg_factor(int32_t shrunk_height, int32_t pad_size) {
  const bool back = pad_size == 128;
  const int32_t unit = back ? 1 : 2;
  if (shrunk_height == 96 * unit) return 24 * unit;
  if (shrunk_height == 72 * unit) return 18 * unit;
  if (shrunk_height == 128 * unit) return 32 * unit;
  return back ? 15 : 28;
}

/// The longer side becomes pad_size, the other keeps the aspect ratio; halves round away from zero.
inline FrameGeometry frame_geometry(int32_t height, int32_t width, int32_t pad_size) {
  const double scale = static_cast<double>(std::max(height, width)) / pad_size;
  const int32_t shrunk_height = to_int32(std::round(height / scale));
  const int32_t shrunk_width = to_int32(std::round(width / scale));
  return {shrunk_height, shrunk_width, seg_factor(shrunk_height, pad_size)};
}

}  // namespace morvale
