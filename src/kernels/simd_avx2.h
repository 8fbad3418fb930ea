#pragma once

#include <immintrin.h>

#include <cstddef>
#include <cstdint>

namespace morvale::MORVALE_VARIANT {

constexpr ptrdiff_t kBytes = 32;
using Bytes = __m256i;

inline Bytes load(const uint8_t* p) { return _mm256_loadu_si256(reinterpret_cast<const __m256i*>(p)); }
inline void store(uint8_t* p, Bytes v) { _mm256_storeu_si256(reinterpret_cast<__m256i*>(p), v); }
inline Bytes all_bytes(int v) { return _mm256_set1_epi8(static_cast<char>(v)); }

inline Bytes add(Bytes a, Bytes b) { return _mm256_add_epi8(a, b); }
inline Bytes subtract(Bytes a, Bytes b) { return _mm256_sub_epi8(a, b); }
inline Bytes add_saturating(Bytes a, Bytes b) { return _mm256_adds_epu8(a, b); }
inline Bytes subtract_saturating(Bytes a, Bytes b) { return _mm256_subs_epu8(a, b); }
inline Bytes equal(Bytes a, Bytes b) { return _mm256_cmpeq_epi8(a, b); }
inline Bytes bit_and(Bytes a, Bytes b) { return _mm256_and_si256(a, b); }
inline Bytes bit_xor(Bytes a, Bytes b) { return _mm256_xor_si256(a, b); }
inline Bytes smaller(Bytes a, Bytes b) { return _mm256_min_epu8(a, b); }

/// (a + b) >> 1. The processor's average rounds up: take off what it added.
inline Bytes average_down(Bytes a, Bytes b) {
  const Bytes odd = _mm256_and_si256(_mm256_xor_si256(a, b), _mm256_set1_epi8(1));
  return _mm256_sub_epi8(_mm256_avg_epu8(a, b), odd);
}

constexpr ptrdiff_t kFloats = 8;
using Floats = __m256;

inline void store_floats(float* p, Floats v) { _mm256_storeu_ps(p, v); }
inline Floats all_floats(float v) { return _mm256_set1_ps(v); }
inline Floats add(Floats a, Floats b) { return _mm256_add_ps(a, b); }
inline Floats subtract(Floats a, Floats b) { return _mm256_sub_ps(a, b); }
inline Floats multiply(Floats a, Floats b) { return _mm256_mul_ps(a, b); }
/// a b + c, rounded once.
inline Floats multiply_add(Floats a, Floats b, Floats c) { return _mm256_fmadd_ps(a, b, c); }

/// Stores a0 b0 c0 d0 a1 b1 c1 d1 ...: 4 * kBytes bytes.
inline void store4(uint8_t* p, Bytes a, Bytes b, Bytes c, Bytes d) {
  const __m256i ab0 = _mm256_unpacklo_epi8(a, b), ab1 = _mm256_unpackhi_epi8(a, b);
  const __m256i cd0 = _mm256_unpacklo_epi8(c, d), cd1 = _mm256_unpackhi_epi8(c, d);
  const __m256i q0 = _mm256_unpacklo_epi16(ab0, cd0), q1 = _mm256_unpackhi_epi16(ab0, cd0);
  const __m256i q2 = _mm256_unpacklo_epi16(ab1, cd1), q3 = _mm256_unpackhi_epi16(ab1, cd1);
  store(p, _mm256_permute2x128_si256(q0, q1, 0x20));
  store(p + 32, _mm256_permute2x128_si256(q2, q3, 0x20));
  store(p + 64, _mm256_permute2x128_si256(q0, q1, 0x31));
  store(p + 96, _mm256_permute2x128_si256(q2, q3, 0x31));
}

}  // namespace morvale::MORVALE_VARIANT
