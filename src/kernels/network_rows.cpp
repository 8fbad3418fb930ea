#include "kernels/network_rows.h"

#include <algorithm>
#include <cstdlib>

namespace morvale::portable {
namespace {

void to_input(const uint8_t* bytes, float* floats, ptrdiff_t n) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    const double share = bytes[i] / 255.0;
    floats[i] = static_cast<float>(share + share - 1.0);
  }
}

void to_bytes(const float* scores, uint8_t* bytes, ptrdiff_t n) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    const float scaled = (scores[i] + 10.0f) * 255.0f / 20.0f;
    bytes[i] = scaled > 0.0f ? static_cast<uint8_t>(std::min(scaled, 255.0f)) : uint8_t{0};
  }
}

template <int kDivisor>
void smooth(uint8_t* now, const uint8_t* before, ptrdiff_t cells) {
  for (; cells > 0; --cells, now += kCellScores, before += kCellScores) {
    int difference = 0;
    for (ptrdiff_t k = 0; k < kCellScores; ++k) difference += std::abs(now[k] - before[k]);
    // With divisor 4 this reaches 319, which wraps to 63: a complete change of all five scores is then
    // blended, not taken over. Part of the output.
    const auto change = static_cast<uint8_t>((difference + 2) / kDivisor);
    const int weight = std::max(256 - 2 * change, 0);
    for (ptrdiff_t k = 0; k < kCellScores; ++k) {
      now[k] = static_cast<uint8_t>((weight * before[k] + (256 - weight) * now[k]) >> 8);
    }
  }
}

void split(const uint8_t* map, uint8_t* const* planes, ptrdiff_t cells) {
  for (ptrdiff_t p = 0; p < cells; ++p) {
    for (ptrdiff_t k = 0; k < kCellScores; ++k) planes[k][p] = map[kCellScores * p + k];
  }
}

}  // namespace

constinit const NetworkRows kNetworkRows = {to_input, to_bytes, smooth<4>, smooth<5>, split};

}  // namespace morvale::portable
