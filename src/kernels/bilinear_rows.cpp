#include "kernels/bilinear_rows.h"

namespace morvale::portable {
namespace {

template <int kChannels>
void bilinear(const BilinearSource& source, int position, uint8_t* dst, int width) {
  const SourceRow &top = source.top, &below = source.below;
  const int fy = source.fy;
  for (int x = 0, p = position; kChannels * x < width; ++x, p += source.step) {
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

}  // namespace

constinit const BilinearRows kBilinearRows = {bilinear<1>, bilinear<2>};

}  // namespace morvale::portable
