/// The resampling rules that NV21 and single-plane scaling share. A sample has kChannels bytes: one for luma,
/// two for a chroma pair.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>

namespace morvale {

/// One row to read from. A column past `last` reads as `last`.
template <int kChannels>
struct SourceRow {
  const uint8_t* data;
  int last;

  int at(int column, int channel) const { return data[kChannels * std::min(column, last) + channel]; }
};

/// A plane to read from. Samples right of a row or below the plane are read as they lie in memory, up to
/// `end`; past it the last sample or row before it stands in. Without an end the caller vouches for the
/// reach.
struct SourcePlane {
  const uint8_t* data;
  ptrdiff_t stride;
  const uint8_t* end = nullptr;

  template <int kChannels>
  SourceRow<kChannels> row(int index) const {
    constexpr ptrdiff_t kFar = std::numeric_limits<int>::max();
    if (end == nullptr) return {data + index * stride, static_cast<int>(kFar)};
    const ptrdiff_t last_row = std::max<ptrdiff_t>((end - data) / stride - 1, 0);
    const uint8_t* start = data + std::min<ptrdiff_t>(index, last_row) * stride;
    return {start, static_cast<int>(std::min((end - start) / kChannels - 1, kFar))};
  }
  template <int kChannels>
  bool empty() const {
    return end != nullptr && end - data < kChannels;
  }
};

/// A packed plane to fill: `rows` rows of `width` bytes. A row may end inside a sample: the bytes that do not
/// fit are dropped.
struct TargetPlane {
  uint8_t* data;
  int width, rows;

  uint8_t* row(int index) const { return data + static_cast<ptrdiff_t>(index) * width; }
  template <int kChannels>
  int columns() const {
    return (width + kChannels - 1) / kChannels;
  }
  template <int kChannels>
  int channels(int column) const {
    return std::min(kChannels, width - kChannels * column);
  }
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
  for (int y = 0, py = 0; y < dst.rows; ++y, py += step.y) {
    const int fy = py & 255;
    const SourceRow<kChannels> top = src.row<kChannels>(py >> 8);
    const SourceRow<kChannels> below = fy == 0 ? top : src.row<kChannels>((py >> 8) + 1);
    uint8_t* out = dst.row(y);
    for (int x = 0, px = 0; x < dst.columns<kChannels>(); ++x, px += step.x) {
      const int fx = px & 255;
      const int left = px >> 8;
      const int right = left + (fx != 0);
      for (int k = 0; k < dst.channels<kChannels>(x); ++k) {
        const int v = ((256 - fx) * top.at(left, k) + fx * top.at(right, k)) * (256 - fy) +
                      ((256 - fx) * below.at(left, k) + fx * below.at(right, k)) * fy;
        *out++ = static_cast<uint8_t>(v >> 16);  // v is at most 255 << 16: no clamp
      }
    }
  }
}

/// Averages 1, 2 or 4 neighbours, truncating. Rows come in twos: an odd count writes one row more. Columns
/// end with the row.
template <int kChannels>
void resample_half_ratio(const SourcePlane& src, const TargetPlane& dst, Steps step) {
  const int ix = step.x >> 8, iy = step.y >> 8;
  for (int y = 0, r = 0; y < dst.rows; y += 2, r += 2 * iy + 1) {
    const SourceRow<kChannels> first = src.row<kChannels>(r);
    const SourceRow<kChannels> upper = src.row<kChannels>(r + iy);
    const SourceRow<kChannels> lower = src.row<kChannels>(r + iy + 1);
    uint8_t* out0 = dst.row(y);
    uint8_t* out1 = dst.row(y + 1);
    for (int x = 0, c = 0; x < dst.columns<kChannels>(); ++x) {
      if (x % 2 == 0) {
        for (int k = 0; k < dst.channels<kChannels>(x); ++k) {
          *out0++ = static_cast<uint8_t>(first.at(c, k));
          *out1++ = static_cast<uint8_t>((upper.at(c, k) + lower.at(c, k)) >> 1);
        }
      } else {
        const int a = c + ix, b = a + 1;
        for (int k = 0; k < dst.channels<kChannels>(x); ++k) {
          *out0++ = static_cast<uint8_t>((first.at(a, k) + first.at(b, k)) >> 1);
          *out1++ =
              static_cast<uint8_t>((upper.at(a, k) + upper.at(b, k) + lower.at(a, k) + lower.at(b, k)) >> 2);
        }
        c += 2 * ix + 1;
      }
    }
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
