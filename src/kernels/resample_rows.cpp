#include "kernels/resample_rows.h"

#include <algorithm>

namespace morvale::portable {
namespace {

template <int kChannels>
int at(const SourceRow& row, int column, int channel) {
  return row.data[ptrdiff_t{kChannels} * std::min(column, row.last) + channel];
}

/// Bytes of a row of `width` that belong to sample x: fewer than kChannels where the row ends inside it.
template <int kChannels>
int channels(int width, int x) {
  return std::min(kChannels, width - kChannels * x);
}

template <int kChannels>
void bilinear(const BilinearRows& rows, int position, uint8_t* dst, int width) {
  const SourceRow &top = rows.top, &below = rows.below;
  const int fy = rows.fy;
  for (int x = 0, p = position; kChannels * x < width; ++x, p += rows.step) {
    const int fx = p & 255;
    const int left = p >> 8;
    const int right = left + (fx != 0);  // a neighbour of weight 0 is not read: the sample stands in
    for (int k = 0; k < channels<kChannels>(width, x); ++k) {
      const int v =
          ((256 - fx) * at<kChannels>(top, left, k) + fx * at<kChannels>(top, right, k)) * (256 - fy) +
          ((256 - fx) * at<kChannels>(below, left, k) + fx * at<kChannels>(below, right, k)) * fy;
      *dst++ = static_cast<uint8_t>(v >> 16);  // v is at most 255 << 16: no clamp
    }
  }
}

template <int kChannels>
void half_ratio(const HalfRatioRows& rows, int column, uint8_t* above, uint8_t* under, int width) {
  const auto& [first, upper, lower, ix] = rows;
  for (int x = 0, c = column; kChannels * x < width; ++x) {
    if (x % 2 == 0) {
      for (int k = 0; k < channels<kChannels>(width, x); ++k) {
        *above++ = static_cast<uint8_t>(at<kChannels>(first, c, k));
        *under++ = static_cast<uint8_t>((at<kChannels>(upper, c, k) + at<kChannels>(lower, c, k)) >> 1);
      }
    } else {
      const int a = c + ix, b = a + 1;
      for (int k = 0; k < channels<kChannels>(width, x); ++k) {
        *above++ = static_cast<uint8_t>((at<kChannels>(first, a, k) + at<kChannels>(first, b, k)) >> 1);
        *under++ = static_cast<uint8_t>((at<kChannels>(upper, a, k) + at<kChannels>(upper, b, k) +
                                         at<kChannels>(lower, a, k) + at<kChannels>(lower, b, k)) >>
                                        2);
      }
      c += 2 * ix + 1;
    }
  }
}

}  // namespace

constinit const ResampleRows kResampleRows = {bilinear<1>, bilinear<2>, half_ratio<1>, half_ratio<2>};

}  // namespace morvale::portable
