#include "kernels/half_ratio_rows.h"

namespace morvale::portable {
namespace {

template <int kChannels>
void half_ratio(const HalfRatioSource& source, int column, uint8_t* above, uint8_t* under, int width) {
  const auto& [first, upper, lower, ix] = source;
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

constinit const HalfRatioRows kHalfRatioRows = {half_ratio<1>, half_ratio<2>};

}  // namespace morvale::portable
