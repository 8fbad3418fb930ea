#include "kernels/plane_rows.h"

#include <cstring>

namespace morvale::portable {
namespace {

uint8_t blend(int wa, int a, int wb, int b) { return static_cast<uint8_t>((wa * a + wb * b + 1) >> 8); }

void quadruple_row(const uint8_t* src, uint8_t* dst, int width) {
  for (int i = 0; i + 1 < width; ++i, dst += 4) {
    const int a = src[i], b = src[i + 1];
    // A full weight of 256 does not fit a byte, so the first of the four is a 255 : 1 blend, not a copy.
    dst[0] = blend(255, a, 1, b);
    dst[1] = blend(192, a, 64, b);
    dst[2] = blend(128, a, 128, b);
    dst[3] = blend(64, a, 192, b);
  }
  std::memset(dst, src[width - 1], 4);
}

void quarter_rows(const uint8_t* above, const uint8_t* below, uint8_t* dst, ptrdiff_t stride, ptrdiff_t n) {
  for (ptrdiff_t x = 0; x < n; ++x) {
    dst[x] = blend(192, above[x], 64, below[x]);
    dst[stride + x] = blend(128, above[x], 128, below[x]);
    dst[2 * stride + x] = blend(64, above[x], 192, below[x]);
  }
}

}  // namespace

constinit const PlaneRows kPlaneRows = {quadruple_row, quarter_rows};

}  // namespace morvale::portable
