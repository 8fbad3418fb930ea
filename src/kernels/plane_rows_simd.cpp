#include "kernels/plane_rows.h"
#include "kernels/simd.h"

namespace morvale::MORVALE_VARIANT {
namespace {

/// What lies a quarter, half and three quarters of the way from a to b: (192 a + 64 b + 1) >> 8 is
/// (3 a + b) >> 2, which is two nested averages that round down; the others alike.
struct Quarters {
  Bytes one, two, three;
};

#if defined(__AVX2__)

/// The processor's average rounds up, and so rounds down between complements.
Quarters quarters(Bytes a, Bytes b) {
  const Bytes ones = all_bytes(255), not_a = bit_xor(a, ones), not_b = bit_xor(b, ones);
  const Bytes middle = _mm256_avg_epu8(not_a, not_b);
  return {bit_xor(_mm256_avg_epu8(not_a, middle), ones), bit_xor(middle, ones),
          bit_xor(_mm256_avg_epu8(not_b, middle), ones)};
}

/// Each byte's right neighbour; `last` is that of the last one.
Bytes right_neighbours(Bytes v, uint8_t last) {
  const Bytes beyond = _mm256_permute2x128_si256(v, all_bytes(last), 0x21);
  return _mm256_alignr_epi8(beyond, v, 1);
}

#else

Quarters quarters(Bytes a, Bytes b) {
  const Bytes middle = average_down(a, b);
  return {average_down(a, middle), middle, average_down(b, middle)};
}

Bytes right_neighbours(Bytes v, uint8_t last) { return vextq_u8(v, all_bytes(last), 1); }

#endif

/// (255 a + b + 1) >> 8 is a, less one when b lies at least 2 below it, and 1 for 0 and 255.
Bytes nearly_first(Bytes a, Bytes b) {
  const Bytes one = all_bytes(1), below = subtract_saturating(a, b), above = subtract_saturating(b, a);
  const Bytes at_least_two = smaller(subtract_saturating(below, one), one);
  // The mask of "255 above" is minus one.
  return subtract(subtract(a, at_least_two), equal(above, all_bytes(255)));
}

/// The last block moves back to end with the row. Its last pixel is its own neighbour: every blend of it is
/// that pixel again.
void quadruple_row(const uint8_t* src, uint8_t* dst, int width) {
  constexpr int kBlock = static_cast<int>(kBytes);
  if (width < kBlock) return portable::kPlaneRows.quadruple_row(src, dst, width);
  for (int i = 0; i < width; i += kBlock) {
    const int begin = lesser(i, width - kBlock);
    const Bytes a = load(src + begin);
    const Bytes b = begin + kBlock < width ? load(src + begin + 1) : right_neighbours(a, src[width - 1]);
    const Quarters between = quarters(a, b);
    store4(dst + 4 * ptrdiff_t{begin}, nearly_first(a, b), between.one, between.two, between.three);
  }
}

inline void quarter_block(const uint8_t* above, const uint8_t* below, uint8_t* dst, ptrdiff_t stride) {
  const Quarters between = quarters(load(above), load(below));
  store(dst, between.one);
  store(dst + stride, between.two);
  store(dst + 2 * stride, between.three);
}

/// One block at each end, and between them those that lie aligned in the destination: stores across cache
/// lines would cost more than the arithmetic.
void quarter_rows(const uint8_t* above, const uint8_t* below, uint8_t* dst, ptrdiff_t stride, ptrdiff_t n) {
  if (n < kBytes) return portable::kPlaneRows.quarter_rows(above, below, dst, stride, n);
  const auto misaligned = static_cast<ptrdiff_t>(reinterpret_cast<uintptr_t>(dst) % kBytes);
  ptrdiff_t x = 0;
  if (misaligned != 0) {
    quarter_block(above, below, dst, stride);
    x = kBytes - misaligned;
  }
  for (; x + kBytes <= n; x += kBytes) quarter_block(above + x, below + x, dst + x, stride);
  const ptrdiff_t last = n - kBytes;
  if (x < n) quarter_block(above + last, below + last, dst + last, stride);
}

}  // namespace

constinit const PlaneRows kPlaneRows = {quadruple_row, quarter_rows};

}  // namespace morvale::MORVALE_VARIANT
