/// The resampling rules that NV21 and single-plane scaling share, over whole planes; the row loops are
/// kernels/bilinear_rows.h and half_ratio_rows.h. A sample has kChannels bytes: one for luma, two for a
/// chroma pair.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "kernels/kernel_set.h"

namespace morvale {

/// A plane to read from. Samples right of a row or below the plane are read as they lie in memory, up to
/// `end`; past it the last sample or row before it stands in. Without an end the caller vouches for the
/// reach.
struct SourcePlane {
  const uint8_t* data;
  ptrdiff_t stride;
  const uint8_t* end = nullptr;

  template <int kChannels>
  bool empty() const {
    return end != nullptr && end - data < kChannels;
  }
};

/// The rows of a plane that is not empty.
template <int kChannels>
class SourceRows {
 public:
  explicit SourceRows(const SourcePlane& plane)
      : plane_(plane),
        last_row_(plane.end == nullptr
                      ? kFar
                      : std::max<ptrdiff_t>((plane.end - plane.data - kChannels) / plane.stride, 0)) {}

  SourceRow operator[](int index) const {
    const uint8_t* start = plane_.data + std::min<ptrdiff_t>(index, last_row_) * plane_.stride;
    if (plane_.end == nullptr) return {start, kFar};
    return {start, static_cast<int>(std::min<ptrdiff_t>((plane_.end - start) / kChannels - 1, kFar))};
  }

 private:
  static constexpr int kFar = std::numeric_limits<int>::max();
  SourcePlane plane_;
  ptrdiff_t last_row_;
};

/// A packed plane to fill: `rows` rows of `width` bytes. A row may end inside a sample: the bytes that do not
/// fit are dropped.
struct TargetPlane {
  uint8_t* data;
  int width, rows;

  uint8_t* row(int index) const { return data + static_cast<ptrdiff_t>(index) * width; }
};

/// Q8 steps of source position per output sample.
struct Steps {
  int x, y;
};

/// 0 for a destination size of 0, which then has nothing to write.
inline int q8_step(int source_size, int destination_size) {
  return destination_size == 0 ? 0 : (source_size << 8) / destination_size;
}

/// Both fractions exactly one half (ratios 1.5, 2.5, ...): the averaging rule.
inline bool is_half_ratio(Steps s) { return (s.x & 255) == 128 && (s.y & 255) == 128; }

/// Bilinear, truncating, sampled from the top-left corner of each step. A neighbour of weight 0 is not read,
/// so that the source needs no extra row and column: the sample itself stands in, which changes nothing.
template <int kChannels>
void resample_bilinear(const SourcePlane& src, const TargetPlane& dst, Steps step) {
  const auto fill_row = kChannels == 1 ? kernels().bilinear.bytes : kernels().bilinear.pairs;
  const SourceRows<kChannels> source(src);
  for (int y = 0, py = 0; y < dst.rows; ++y, py += step.y) {
    const int fy = py & 255;
    const SourceRow top = source[py >> 8];
    const SourceRow below = fy == 0 ? top : source[(py >> 8) + 1];
    const ptrdiff_t ahead = y + 1 < dst.rows ? source[(py + step.y) >> 8].data - top.data : 0;
    fill_row({top, below, fy, step.x, ahead}, 0, dst.row(y), dst.width);
  }
}

/// Averages 1, 2 or 4 neighbours, truncating. Rows come in twos: an odd count writes one row more. Columns
/// end with the row.
template <int kChannels>
void resample_half_ratio(const SourcePlane& src, const TargetPlane& dst, Steps step) {
  const auto fill_rows = kChannels == 1 ? kernels().half_ratio.bytes : kernels().half_ratio.pairs;
  const SourceRows<kChannels> source(src);
  const int ix = step.x >> 8, iy = step.y >> 8;
  for (int y = 0, r = 0; y < dst.rows; y += 2, r += 2 * iy + 1) {
    fill_rows({source[r], source[r + iy], source[r + iy + 1], ix}, 0, dst.row(y), dst.row(y + 1), dst.width);
  }
}

template <int kChannels>
void resample(const SourcePlane& src, const TargetPlane& dst, Steps step) {
  if (src.empty<kChannels>()) return;
  if (is_half_ratio(step)) {
    resample_half_ratio<kChannels>(src, dst, step);
  } else {
    resample_bilinear<kChannels>(src, dst, step);
  }
}

}  // namespace morvale
