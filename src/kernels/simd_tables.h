/// Bytes picked by number from a few registers: what AVX2's shuffle and NEON's table look-up have in common.
/// On AVX2 each 128-bit half picks from registers of its own.
#pragma once

#include "kernels/simd.h"

namespace morvale::MORVALE_VARIANT {
namespace {

#if defined(__AVX2__)

inline __m128i load_half(const uint8_t* p) { return _mm_loadu_si128(reinterpret_cast<const __m128i*>(p)); }
inline __m256i halves(__m128i low, __m128i high) {
  return _mm256_inserti128_si256(_mm256_castsi128_si256(low), high, 1);
}
/// The same 16 bytes for each half.
inline Bytes for_each_half(const uint8_t* p) { return _mm256_broadcastsi128_si256(load_half(p)); }

/// The shuffle gives 0 where the top bit of its index is set: here for all numbers but first .. first + 15.
inline Bytes shuffle_index(Bytes number, int first) {
  return add_saturating(subtract(number, all_bytes(first)), all_bytes(0x70));
}

/// Bytes 0 .. 15 and 16 .. 31, for each half.
struct ByteTable {
  __m256i low, high;
};
inline ByteTable byte_table(const uint8_t* low, const uint8_t* high) {
  return {for_each_half(low), for_each_half(high)};
}
/// Two runs of 24 bytes, one behind the other. Bytes 8 .. 15 of a run are its bytes 16 .. 23 too.
inline ByteTable two_dozen_bytes(const uint8_t* p) {
  return {halves(load_half(p), load_half(p + 24)), halves(load_half(p + 8), load_half(p + 32))};
}
inline Bytes pick(const ByteTable& table, Bytes number) {
  return _mm256_or_si256(_mm256_shuffle_epi8(table.low, shuffle_index(number, 0)),
                         _mm256_shuffle_epi8(table.high, shuffle_index(number, 16)));
}

/// Which bytes of kCount windows of 16 to pick, those of the second counting from 16 on, and so forth.
template <int kCount>
struct WindowPick {
  explicit WindowPick(Bytes number) {
    for (int k = 0; k < kCount; ++k) index[k] = shuffle_index(number, 16 * k);
  }
  Bytes index[kCount];
};

/// 16 bytes in a row; or 8, and 8 that begin `gap` bytes behind the first.
template <bool kSplit>
inline __m128i window(const uint8_t* p, ptrdiff_t gap) {
  if (!kSplit) return load_half(p);
  const __m128i front = _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p));
  return _mm_unpacklo_epi64(front, _mm_loadl_epi64(reinterpret_cast<const __m128i*>(p + gap)));
}

/// The windows begin `step` bytes apart, for the lower half at `low` and for the upper one at `high`.
template <int kCount, bool kSplit>
inline Bytes pick_from_windows(const uint8_t* low, const uint8_t* high, ptrdiff_t step, ptrdiff_t gap,
                               const WindowPick<kCount>& pick) {
  Bytes picked = all_bytes(0);
  for (int k = 0; k < kCount; ++k) {
    const __m256i both = halves(window<kSplit>(low + k * step, gap), window<kSplit>(high + k * step, gap));
    picked = _mm256_or_si256(picked, _mm256_shuffle_epi8(both, pick.index[k]));
  }
  return picked;
}

/// In each half, the lower (the upper) eight bytes of a, then those of b.
inline Bytes lower_eights(Bytes a, Bytes b) { return _mm256_unpacklo_epi64(a, b); }
inline Bytes upper_eights(Bytes a, Bytes b) { return _mm256_unpackhi_epi64(a, b); }

#else

inline Bytes for_each_half(const uint8_t* p) { return load(p); }

using ByteTable = uint8x16x2_t;
inline ByteTable byte_table(const uint8_t* low, const uint8_t* high) {
  return {{vld1q_u8(low), vld1q_u8(high)}};
}
inline ByteTable two_dozen_bytes(const uint8_t* p) { return byte_table(p, p + 8); }
inline Bytes pick(const ByteTable& table, Bytes number) { return vqtbl2q_u8(table, number); }

/// Which bytes of kCount windows of 16 to pick, those of the second counting from 16 on, and so forth.
template <int kCount>
struct WindowPick {
  explicit WindowPick(Bytes n) : number(n) {}
  Bytes number;
};

/// 16 bytes in a row; or 8, and 8 that begin `gap` bytes behind the first.
template <bool kSplit>
inline Bytes window(const uint8_t* p, ptrdiff_t gap) {
  return kSplit ? vcombine_u8(vld1_u8(p), vld1_u8(p + gap)) : vld1q_u8(p);
}

/// The windows begin `step` bytes apart, for the one half that there is at `p`.
template <int kCount, bool kSplit>
inline Bytes pick_from_windows(const uint8_t* p, const uint8_t* /*high*/, ptrdiff_t step, ptrdiff_t gap,
                               const WindowPick<kCount>& pick) {
  static_assert(kCount == 2 || kCount == 4);
  const Bytes w0 = window<kSplit>(p, gap), w1 = window<kSplit>(p + step, gap);
  if constexpr (kCount == 2) {
    const uint8x16x2_t windows = {{w0, w1}};
    return vqtbl2q_u8(windows, pick.number);
  } else {
    const Bytes w2 = window<kSplit>(p + 2 * step, gap), w3 = window<kSplit>(p + 3 * step, gap);
    const uint8x16x4_t windows = {{w0, w1, w2, w3}};
    return vqtbl4q_u8(windows, pick.number);
  }
}

/// The lower (the upper) eight bytes of a, then those of b.
inline Bytes lower_eights(Bytes a, Bytes b) {
  return vreinterpretq_u8_u64(vzip1q_u64(vreinterpretq_u64_u8(a), vreinterpretq_u64_u8(b)));
}
inline Bytes upper_eights(Bytes a, Bytes b) {
  return vreinterpretq_u8_u64(vzip2q_u64(vreinterpretq_u64_u8(a), vreinterpretq_u64_u8(b)));
}

#endif

}  // namespace
}  // namespace morvale::MORVALE_VARIANT
