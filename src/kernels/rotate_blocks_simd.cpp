#include "kernels/rotate_blocks.h"
#include "kernels/simd.h"

namespace morvale::MORVALE_VARIANT {
namespace {

#if defined(__AVX2__)

/// 16 bytes of one row below 16 bytes of another: each 128-bit half transposes a tile of its own.
Bytes load_halves(const uint8_t* low, const uint8_t* high) {
  const __m256i v = _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(low)));
  return _mm256_inserti128_si256(v, _mm_loadu_si128(reinterpret_cast<const __m128i*>(high)), 1);
}

Bytes interleave_low(Bytes a, Bytes b) { return _mm256_unpacklo_epi8(a, b); }
Bytes interleave_high(Bytes a, Bytes b) { return _mm256_unpackhi_epi8(a, b); }
Bytes interleave_low_pairs(Bytes a, Bytes b) { return _mm256_unpacklo_epi16(a, b); }
Bytes interleave_high_pairs(Bytes a, Bytes b) { return _mm256_unpackhi_epi16(a, b); }

Bytes reversed_halves(Bytes v, __m128i order) {
  return _mm256_permute4x64_epi64(_mm256_shuffle_epi8(v, _mm256_broadcastsi128_si256(order)), 0x4E);
}
Bytes reversed(Bytes v) {
  return reversed_halves(v, _mm_setr_epi8(15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0));
}
Bytes reversed_pairs(Bytes v) {
  return reversed_halves(v, _mm_setr_epi8(14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1));
}

/// Four vectors in a row.
struct FourBytes {
  Bytes val[4];
};
FourBytes load_four(const uint8_t* p) {
  return {{load(p), load(p + kBytes), load(p + 2 * kBytes), load(p + 3 * kBytes)}};
}
void store_four(uint8_t* p, const FourBytes& v) {
  for (int i = 0; i < 4; ++i) store(p + i * kBytes, v.val[i]);
}

#else

Bytes load_halves(const uint8_t* low, const uint8_t*) { return load(low); }

Bytes interleave_low(Bytes a, Bytes b) { return vzip1q_u8(a, b); }
Bytes interleave_high(Bytes a, Bytes b) { return vzip2q_u8(a, b); }
Bytes interleave_low_pairs(Bytes a, Bytes b) {
  return vreinterpretq_u8_u16(vzip1q_u16(vreinterpretq_u16_u8(a), vreinterpretq_u16_u8(b)));
}
Bytes interleave_high_pairs(Bytes a, Bytes b) {
  return vreinterpretq_u8_u16(vzip2q_u16(vreinterpretq_u16_u8(a), vreinterpretq_u16_u8(b)));
}

constexpr uint8_t kBackwards[16] = {15, 14, 13, 12, 11, 10, 9, 8, 7, 6, 5, 4, 3, 2, 1, 0};
constexpr uint8_t kPairsBackwards[16] = {14, 15, 12, 13, 10, 11, 8, 9, 6, 7, 4, 5, 2, 3, 0, 1};
Bytes reversed(Bytes v) { return vqtbl1q_u8(v, load(kBackwards)); }
Bytes reversed_pairs(Bytes v) { return vqtbl1q_u8(v, load(kPairsBackwards)); }

/// Four vectors in a row. One instruction moves them: apart, each load and store would cost as much as the
/// look-up.
using FourBytes = uint8x16x4_t;
FourBytes load_four(const uint8_t* p) { return vld1q_u8_x4(p); }
void store_four(uint8_t* p, const FourBytes& v) { vst1q_u8_x4(p, v); }

#endif

/// What differs between bytes and pairs: how many lie in 16 bytes of a row, and the interleaves.
struct ByteSamples {
  static constexpr int kSize = 1, kColumns = 16;
  static Bytes low(Bytes a, Bytes b) { return interleave_low(a, b); }
  static Bytes high(Bytes a, Bytes b) { return interleave_high(a, b); }
  static Bytes reverse(Bytes v) { return reversed(v); }
};
struct PairSamples {
  static constexpr int kSize = 2, kColumns = 8;
  static Bytes low(Bytes a, Bytes b) { return interleave_low_pairs(a, b); }
  static Bytes high(Bytes a, Bytes b) { return interleave_high_pairs(a, b); }
  static Bytes reverse(Bytes v) { return reversed_pairs(v); }
};

/// One round of the transposition: row i is interleaved with the row half a tile below it.
template <class Samples>
inline void interleave_halves(const Bytes* in, Bytes* out) {
  constexpr int kHalf = Samples::kColumns / 2;
#pragma GCC unroll 8
  for (int i = 0; i < kHalf; ++i) {
    out[2 * i] = Samples::low(in[i], in[i + kHalf]);
    out[2 * i + 1] = Samples::high(in[i], in[i + kHalf]);
  }
}

/// A tile: kColumns source columns, and as many rows as fill a vector with what one column holds.
template <class Samples>
inline void transpose_tile(const uint8_t* src, ptrdiff_t src_stride, uint8_t* dst, ptrdiff_t dst_stride) {
  constexpr int kColumns = Samples::kColumns;
  Bytes a[kColumns], b[kColumns];
#pragma GCC unroll 16
  for (int i = 0; i < kColumns; ++i) {
    a[i] = load_halves(src + i * src_stride, src + (i + kColumns) * src_stride);
  }
  // As many rounds as an index has bits: each moves one bit of the row index into the column index.
  interleave_halves<Samples>(a, b);
  interleave_halves<Samples>(b, a);
  interleave_halves<Samples>(a, b);
  if constexpr (kColumns == 16) interleave_halves<Samples>(b, a);
  const Bytes* out = kColumns == 16 ? a : b;
#pragma GCC unroll 16
  for (int i = 0; i < kColumns; ++i) store(dst + i * dst_stride, out[i]);
}

/// Goes down the picture in strips as wide as a cache line, so that a source line is used up while it is
/// near. The last tiles of a strip or of the picture move back to lie inside and write some bytes again.
template <class Samples>
void transpose(const uint8_t* src, ptrdiff_t src_stride, uint8_t* dst, ptrdiff_t dst_stride, int columns,
               int rows) {
  constexpr int kColumns = Samples::kColumns, kRows = static_cast<int>(kBytes) / Samples::kSize;
  constexpr int kStrip = 64 / Samples::kSize;
  if (columns < kColumns || rows < kRows) {
    const auto loop = Samples::kSize == 1 ? portable::kRotateBlocks.transpose_bytes
                                          : portable::kRotateBlocks.transpose_pairs;
    loop(src, src_stride, dst, dst_stride, columns, rows);
    return;
  }
  for (int strip = 0; strip < columns; strip += kStrip) {
    const int strip_end = lesser(strip + kStrip, columns);
    for (int row = 0; row < rows; row += kRows) {
      const ptrdiff_t y = lesser(row, rows - kRows);
      for (int column = strip; column < strip_end; column += kColumns) {
        const ptrdiff_t x = lesser(column, columns - kColumns);
        transpose_tile<Samples>(src + y * src_stride + x * Samples::kSize, src_stride,
                                dst + x * dst_stride + y * Samples::kSize, dst_stride);
      }
    }
  }
}

template <class Samples>
void reverse(const uint8_t* src, uint8_t* dst, ptrdiff_t n) {
  constexpr ptrdiff_t kStep = kBytes / Samples::kSize;
  const uint8_t* from = src + n * Samples::kSize;
  for (; n >= 4 * kStep; n -= 4 * kStep, dst += 4 * kBytes) {
    from -= 4 * kBytes;
    const FourBytes v = load_four(from);
    store_four(dst, {{Samples::reverse(v.val[3]), Samples::reverse(v.val[2]), Samples::reverse(v.val[1]),
                      Samples::reverse(v.val[0])}});
  }
  for (; n >= kStep; n -= kStep, dst += kBytes) {
    from -= kBytes;
    store(dst, Samples::reverse(load(from)));
  }
  const auto tail =
      Samples::kSize == 1 ? portable::kRotateBlocks.reverse_bytes : portable::kRotateBlocks.reverse_pairs;
  tail(src, dst, n);
}

}  // namespace

constinit const RotateBlocks kRotateBlocks = {transpose<ByteSamples>, transpose<PairSamples>,
                                              reverse<ByteSamples>, reverse<PairSamples>};

}  // namespace morvale::MORVALE_VARIANT
