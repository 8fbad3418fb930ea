/// The steps of the colour loops on AVX2, and on AVX-512 where it differs. color_rows_simd.cpp strings them
/// together.
#pragma once

#include "kernels/color_rows.h"
#include "kernels/color_terms.h"
#include "kernels/simd.h"

namespace morvale::MORVALE_VARIANT {
namespace {

constexpr uint8_t kNone = 0x80;  // the shuffle's index for a zero byte

/// The same shuffle of both halves.
struct alignas(32) Index {
  uint8_t of[32];
};
// never run: made while compiling
constexpr Index both_halves(const uint8_t (&half)[16]) {
  Index index{};
  for (int i = 0; i < 32; ++i) index.of[i] = half[i % 16];
  return index;
}
inline __m256i shuffle(__m256i v, const Index& index) {
  return _mm256_shuffle_epi8(v, _mm256_load_si256(reinterpret_cast<const __m256i*>(index.of)));
}

inline __m256i word_pairs(int even, int odd) {
  return _mm256_set1_epi32(
      static_cast<int>((static_cast<unsigned>(odd) << 16) | (static_cast<unsigned>(even) & 0xFFFF)));
}

inline __m256i load_halves(const uint8_t* low, const uint8_t* high) {
  return _mm256_inserti128_si256(
      _mm256_castsi128_si256(_mm_loadu_si128(reinterpret_cast<const __m128i*>(low))),
      _mm_loadu_si128(reinterpret_cast<const __m128i*>(high)), 1);
}

/// Every chroma sample twice. `term` holds 16 of them.
inline Terms split(__m256i term) {
  const __m256i both = _mm256_packus_epi16(term, _mm256_sub_epi16(_mm256_setzero_si256(), term));
  return {_mm256_unpacklo_epi8(both, both), _mm256_unpackhi_epi8(both, both)};
}

/// The sum of the pairs' products, which hold 2^8 times the chroma, as Q14.
template <YuvRounding kRounding>
inline __m256i green_sums(__m256i pairs, __m256i weights) {
  __m256i sum = _mm256_madd_epi16(pairs, weights);
  if constexpr (kRounding == kRound) sum = _mm256_add_epi32(sum, _mm256_set1_epi32(1 << 21));
  return _mm256_srai_epi32(sum, 22);
}

/// c k / 2^14: truncated as 4 c k >> 16, rounded as (2 c k + 2^14) >> 15.
template <YuvRounding kRounding>
inline __m256i scaled_product(__m256i scaled, int k) {
  const __m256i weight = _mm256_set1_epi16(static_cast<int16_t>(k));
  return kRounding == kRound ? _mm256_mulhrs_epi16(scaled, weight) : _mm256_mulhi_epi16(scaled, weight);
}

template <bool kVFirst, YuvRounding kRounding>
inline ColorTerms decode_chroma(const uint8_t* chroma) {
  const __m256i zero = _mm256_setzero_si256();
  const __m256i centred = _mm256_xor_si256(load(chroma), _mm256_set1_epi8(-128));
  // Scaled for the multiplications below by a shift up and one down.
  constexpr int kScale = kRounding == kRound ? 1 : 2;
  const __m256i first = _mm256_srai_epi16(_mm256_slli_epi16(centred, 8), 8 - kScale);
  const __m256i second = _mm256_slli_epi16(_mm256_srai_epi16(centred, 8), kScale);
  const __m256i weights = kVFirst ? word_pairs(kGreenOfV, kGreenOfU) : word_pairs(kGreenOfU, kGreenOfV);
  const __m256i green =
      _mm256_packs_epi32(green_sums<kRounding>(_mm256_unpacklo_epi8(zero, centred), weights),
                         green_sums<kRounding>(_mm256_unpackhi_epi8(zero, centred), weights));
  return {split(scaled_product<kRounding>(kVFirst ? first : second, kRedOfV)), split(green),
          split(scaled_product<kRounding>(kVFirst ? second : first, kBlueOfU))};
}

/// Bytes a0 b0 c0 a1 b1 c1 ... of 32 pixels, in three registers.
struct Pixels {
  __m256i part[3];
};

#if defined(__AVX512VBMI__)

/// Where output byte first + i comes from: a holds 0 .. 31, b 32 .. 63, c 64 .. 95.
struct alignas(64) WideIndex {
  uint8_t of[64];
};
constexpr WideIndex interleaved(int first) {
  WideIndex index{};
  for (int i = 0; i < 64; ++i) {
    index.of[i] = static_cast<uint8_t>(((first + i) % 3 * 32 + (first + i) / 3) % 128);
  }
  return index;
}

inline Pixels interleave(Bytes a, Bytes b, Bytes c) {
  static constexpr WideIndex kFirst = interleaved(0), kRest = interleaved(64);
  const __m512i ab = _mm512_inserti64x4(_mm512_castsi256_si512(a), b, 1);
  const __m512i only_c = _mm512_castsi256_si512(c);
  const __m512i first = _mm512_permutex2var_epi8(ab, _mm512_load_si512(kFirst.of), only_c);
  const __m512i rest = _mm512_permutex2var_epi8(ab, _mm512_load_si512(kRest.of), only_c);
  return {{_mm512_castsi512_si256(first), _mm512_extracti64x4_epi64(first, 1), _mm512_castsi512_si256(rest)}};
}

#else

inline Pixels interleave(Bytes a, Bytes b, Bytes c) {
  // Of each half's 16 pixels every byte goes to its place modulo 16; no two places of a channel meet.
  static constexpr Index kA = both_halves({0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15, 10, 5});
  static constexpr Index kB = both_halves({5, 0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15, 10});
  static constexpr Index kC = both_halves({10, 5, 0, 11, 6, 1, 12, 7, 2, 13, 8, 3, 14, 9, 4, 15});
  const __m256i second = _mm256_setr_epi8(0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0,  //
                                          0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0);
  const __m256i third = _mm256_setr_epi8(0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0,  //
                                         0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0, 0, -1, 0);
  a = shuffle(a, kA);
  b = shuffle(b, kB);
  c = shuffle(c, kC);
  const auto pick = [&](__m256i x, __m256i y, __m256i z) {
    return _mm256_blendv_epi8(_mm256_blendv_epi8(x, y, second), z, third);
  };
  const __m256i p0 = pick(a, b, c), p1 = pick(b, c, a), p2 = pick(c, a, b);
  return {{_mm256_permute2x128_si256(p0, p1, 0x20), _mm256_blend_epi32(p2, p0, 0xF0),
           _mm256_permute2x128_si256(p1, p2, 0x31)}};
}

#endif

/// Stores a0 b0 c0 a1 b1 c1 ...: 3 * kBytes bytes. Around the caches p must be aligned.
template <bool kAroundCaches>
inline void store_pixels(uint8_t* p, Bytes a, Bytes b, Bytes c) {
  const Pixels pixels = interleave(a, b, c);
  for (int i = 0; i < 3; ++i) {
    __m256i* const at = reinterpret_cast<__m256i*>(p + 32 * i);
    if constexpr (kAroundCaches) {
      _mm256_stream_si256(at, pixels.part[i]);
    } else {
      _mm256_storeu_si256(at, pixels.part[i]);
    }
  }
}

inline bool can_go_around_caches(const ColorRowsOut& dst) {
  return ((reinterpret_cast<uintptr_t>(dst.planes[0]) | static_cast<uintptr_t>(dst.stride)) & 31) == 0;
}
/// What was written around the caches becomes visible to other threads like any other store.
inline void settle() { _mm_sfence(); }

/// Window j of 32 pixels: pixels 4 j ... in the low half and 16 + 4 j ... in the high one, 12 bytes each. The
/// last one is shifted into place, so that nothing behind the pixels is read.
template <int kWindow>
inline __m256i window(const uint8_t* pixels) {
  if (kWindow == 3) return _mm256_bsrli_epi128(load_halves(pixels + 32, pixels + 80), 4);
  return load_halves(pixels + 12 * kWindow, pixels + 48 + 12 * kWindow);
}

/// Grey << 16, of eight pixels. The weight of green does not fit a signed word: each pair takes one half.
template <int kWindow>
inline __m256i grey_sums(const uint8_t* bgr) {
  constexpr int kHalf = kGreyOfGreen / 2;
  static constexpr Index kBlueGreen =
      both_halves({0, kNone, 1, kNone, 3, kNone, 4, kNone, 6, kNone, 7, kNone, 9, kNone, 10, kNone});
  static constexpr Index kGreenRed =
      both_halves({1, kNone, 2, kNone, 4, kNone, 5, kNone, 7, kNone, 8, kNone, 10, kNone, 11, kNone});
  const __m256i pixels = window<kWindow>(bgr);
  return _mm256_add_epi32(
      _mm256_madd_epi16(shuffle(pixels, kBlueGreen), word_pairs(kGreyOfBlue, kGreyOfGreen - kHalf)),
      _mm256_madd_epi16(shuffle(pixels, kGreenRed), word_pairs(kHalf, kGreyOfRed)));
}

inline __m256i high_words(__m256i even, __m256i odd) {
  return _mm256_blend_epi16(_mm256_srli_epi32(even, 16), odd, 0xAA);
}

inline Bytes grey_block(const uint8_t* bgr) {
  static constexpr Index kInOrder = both_halves({0, 2, 4, 6, 1, 3, 5, 7, 8, 10, 12, 14, 9, 11, 13, 15});
  const __m256i mixed = _mm256_packus_epi16(high_words(grey_sums<0>(bgr), grey_sums<1>(bgr)),
                                            high_words(grey_sums<2>(bgr), grey_sums<3>(bgr)));
  return shuffle(mixed, kInOrder);
}

/// Byte `kChannel` of each pixel times k, as float. Below the exponent of 2^23 the byte reads as 2^23 + byte;
/// the fused step takes k * 2^23 off again before its one rounding, so this is the rounded product and no
/// conversion is needed. `pixels` holds that exponent in byte 15 of each half.
template <int kChannel>
inline __m256 product(__m256i pixels, float k) {
  static constexpr Index kFloats =
      both_halves({kChannel, kNone, kNone, 15, kChannel + 3, kNone, kNone, 15, kChannel + 6, kNone, kNone, 15,
                   kChannel + 9, kNone, kNone, 15});
  return _mm256_fmsub_ps(_mm256_castsi256_ps(shuffle(pixels, kFloats)), _mm256_set1_ps(k),
                         _mm256_set1_ps(k * 8388608.0f));
}

/// The order of the additions is part of the result.
template <int kRed, int kBlue>
inline __m256i luma_of(__m256i pixels) {
  pixels = _mm256_blend_epi32(pixels, _mm256_set1_epi32(0x4B000000), 0x88);
  return _mm256_cvttps_epi32(
      _mm256_add_ps(_mm256_add_ps(product<kRed>(pixels, 0.299f), product<1>(pixels, 0.587f)),
                    product<kBlue>(pixels, 0.114f)));
}

/// Rounds n / 31250 half away from zero. The factor is one step above the nearest float: that alone takes
/// exact halves outward and moves no other |n| <= 15625 * 255 over its threshold.
inline __m256i chroma_quotient(__m256i n) {
  return _mm256_cvtps_epi32(_mm256_mul_ps(_mm256_cvtepi32_ps(n), _mm256_set1_ps(0x1.0c6f7cp-15f)));
}

/// Four V, then four U in each half, as words, of the even pixels of two windows.
template <int kRed, int kBlue>
inline __m256i chroma_of(__m256i a, __m256i b) {
  static constexpr Index kEven = both_halves({kRed, kNone, 1, kNone, kRed + 6, kNone, 7, kNone, kBlue, kNone,
                                              kNone, kNone, kBlue + 6, kNone, kNone, kNone});
  a = shuffle(a, kEven);
  b = shuffle(b, kEven);
  const __m256i red_green = _mm256_unpacklo_epi64(a, b), blue = _mm256_unpackhi_epi64(a, b);
  const auto sum = [&](int of_red, int of_green, int of_blue) {
    return _mm256_add_epi32(_mm256_madd_epi16(red_green, word_pairs(of_red, of_green)),
                            _mm256_madd_epi16(blue, word_pairs(of_blue, 0)));
  };
  return _mm256_packs_epi32(chroma_quotient(sum(15625, -13084, -2541)),
                            chroma_quotient(sum(-5273, -10352, 15625)));
}

template <int kRed, int kBlue>
inline void encode_block(const uint8_t* pixels, uint8_t* luma, uint8_t* vu) {
  const __m256i w0 = window<0>(pixels), w1 = window<1>(pixels), w2 = window<2>(pixels),
                w3 = window<3>(pixels);
  const __m256i low = _mm256_packs_epi32(luma_of<kRed, kBlue>(w0), luma_of<kRed, kBlue>(w1));
  const __m256i high = _mm256_packs_epi32(luma_of<kRed, kBlue>(w2), luma_of<kRed, kBlue>(w3));
  store(luma, _mm256_packus_epi16(low, high));
  if (vu == nullptr) return;
  static constexpr Index kPairs = both_halves({0, 4, 1, 5, 2, 6, 3, 7, 8, 12, 9, 13, 10, 14, 11, 15});
  // The saturating pack makes 127 of 128; flipping the sign bit adds 128.
  const __m256i chroma = _mm256_packs_epi16(chroma_of<kRed, kBlue>(w0, w1), chroma_of<kRed, kBlue>(w2, w3));
  store(vu, _mm256_xor_si256(shuffle(chroma, kPairs), _mm256_set1_epi8(-128)));
}

/// Bytes first, first + 3, ... of each half as 32-bit lanes.
template <int kChannel>
inline __m256i channel(__m256i pixels) {
  const __m256i index =
      _mm256_setr_epi32(kChannel - 256, kChannel + 3 - 256, kChannel + 6 - 256, kChannel + 9 - 256,  //
                        kChannel + 4 - 256, kChannel + 7 - 256, kChannel + 10 - 256, kChannel + 13 - 256);
  return _mm256_shuffle_epi8(pixels, index);
}

inline __m256i select(__m256i mask, __m256i yes, __m256i no) { return _mm256_blendv_epi8(no, yes, mask); }

/// Eight pixels. Grey needs no case of its own: it counts as red with a difference of 0, and a divisor of 1
/// in place of 0 makes that 0.
inline void hsv_block(const uint8_t* bgr, float* hsv) {
  const __m256i pixels = load_halves(bgr, bgr + 8);
  const __m256i b = channel<0>(pixels), g = channel<1>(pixels), r = channel<2>(pixels);
  const __m256i one = _mm256_set1_epi32(1);
  const __m256i largest = _mm256_max_epi32(_mm256_max_epi32(r, g), b);
  const __m256i delta = _mm256_sub_epi32(largest, _mm256_min_epi32(_mm256_min_epi32(r, g), b));
  const __m256i is_red = _mm256_cmpeq_epi32(largest, r), is_green = _mm256_cmpeq_epi32(largest, g);
  const __m256i difference = select(is_red, _mm256_sub_epi32(g, b),
                                    select(is_green, _mm256_sub_epi32(b, r), _mm256_sub_epi32(r, g)));
  // Whole degrees to add: only a red can be negative, and then takes 360.
  const __m256i wrap = _mm256_and_si256(_mm256_cmpgt_epi32(b, g), _mm256_castps_si256(_mm256_set1_ps(360)));
  const __m256i degrees = select(
      is_red, wrap,
      select(is_green, _mm256_castps_si256(_mm256_set1_ps(120)), _mm256_castps_si256(_mm256_set1_ps(240))));
  const __m256 value = _mm256_cvtepi32_ps(largest), spread = _mm256_cvtepi32_ps(delta);
  const __m256 hue =
      _mm256_add_ps(_mm256_div_ps(_mm256_mul_ps(_mm256_cvtepi32_ps(difference), _mm256_set1_ps(60)),
                                  _mm256_cvtepi32_ps(_mm256_max_epi32(delta, one))),
                    _mm256_castsi256_ps(degrees));
  const __m256 saturation =
      _mm256_div_ps(_mm256_mul_ps(spread, _mm256_set1_ps(255)), _mm256_max_ps(value, _mm256_set1_ps(1)));
  // Each channel's floats go to their places modulo 8, then three blends pick.
  const __m256 h = _mm256_permutevar8x32_ps(hue, _mm256_setr_epi32(0, 3, 6, 1, 4, 7, 2, 5));
  const __m256 s = _mm256_permutevar8x32_ps(saturation, _mm256_setr_epi32(5, 0, 3, 6, 1, 4, 7, 2));
  const __m256 v = _mm256_permutevar8x32_ps(value, _mm256_setr_epi32(2, 5, 0, 3, 6, 1, 4, 7));
  _mm256_storeu_ps(hsv, _mm256_blend_ps(_mm256_blend_ps(h, s, 0x92), v, 0x24));
  _mm256_storeu_ps(hsv + 8, _mm256_blend_ps(_mm256_blend_ps(v, h, 0x92), s, 0x24));
  _mm256_storeu_ps(hsv + 16, _mm256_blend_ps(_mm256_blend_ps(s, v, 0x92), h, 0x24));
}
constexpr ptrdiff_t kHsvBlock = 8;

}  // namespace
}  // namespace morvale::MORVALE_VARIANT
