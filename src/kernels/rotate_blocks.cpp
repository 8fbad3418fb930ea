#include "kernels/rotate_blocks.h"

#include <cstring>

namespace morvale::portable {
namespace {

template <int kChannels>
void transpose(const uint8_t* src, ptrdiff_t src_stride, uint8_t* dst, ptrdiff_t dst_stride, int columns,
               int rows) {
  for (int y = 0; y < rows; ++y) {
    const uint8_t* from = src + y * src_stride;
    uint8_t* to = dst + ptrdiff_t{kChannels} * y;
    for (int x = 0; x < columns; ++x) {
      std::memcpy(to + x * dst_stride, from + ptrdiff_t{kChannels} * x, kChannels);
    }
  }
}

template <int kChannels>
void reverse(const uint8_t* src, uint8_t* dst, ptrdiff_t n) {
  for (ptrdiff_t i = 0; i < n; ++i)
    std::memcpy(dst + kChannels * i, src + kChannels * (n - 1 - i), kChannels);
}

}  // namespace

constinit const RotateBlocks kRotateBlocks = {transpose<1>, transpose<2>, reverse<1>, reverse<2>};

}  // namespace morvale::portable
