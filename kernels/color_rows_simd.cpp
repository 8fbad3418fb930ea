#include "kernels/color_rows.h"
#include "kernels/simd.h"

namespace morvale::MORVALE_VARIANT {
namespace {

/// What kBytes pixels of a channel add to their luma and take from it. One of the two is always 0, and both
/// saturate, so luma + up - down is the sum clamped to a byte: 16384 luma is a multiple of 2^14, which is why
/// the rest of the Q14 sum may be shifted on its own.
struct Terms {
  Bytes up, down;
};
struct ColorTerms {
  Terms red, green, blue;
};

#if defined(__AVX2__)

constexpr uint8_t kNone = 0x80;  // the shuffle's index for a zero byte

/// The same shuffle of both halves.
struct alignas(32) Index {
  uint8_t of[32];
};
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
  const __m256i weights = kVFirst ? word_pairs(-11436, -5532) : word_pairs(-5532, -11436);
  const __m256i green =
      _mm256_packs_epi32(green_sums<kRounding>(_mm256_unpacklo_epi8(zero, centred), weights),
                         green_sums<kRounding>(_mm256_unpackhi_epi8(zero, centred), weights));
  return {split(scaled_product<kRounding>(kVFirst ? first : second, 22458)), split(green),
          split(scaled_product<kRounding>(kVFirst ? second : first, 28384))};
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
  if constexpr (kWindow == 3) return _mm256_bsrli_epi128(load_halves(pixels + 32, pixels + 80), 4);
  return load_halves(pixels + 12 * kWindow, pixels + 48 + 12 * kWindow);
}

/// Grey << 16, of eight pixels. The weight of green does not fit a signed word: each pair takes one half.
template <int kWindow>
inline __m256i grey_sums(const uint8_t* bgr) {
  static constexpr Index kBlueGreen =
      both_halves({0, kNone, 1, kNone, 3, kNone, 4, kNone, 6, kNone, 7, kNone, 9, kNone, 10, kNone});
  static constexpr Index kGreenRed =
      both_halves({1, kNone, 2, kNone, 4, kNone, 5, kNone, 7, kNone, 8, kNone, 10, kNone, 11, kNone});
  const __m256i pixels = window<kWindow>(bgr);
  return _mm256_add_epi32(_mm256_madd_epi16(shuffle(pixels, kBlueGreen), word_pairs(4732, 23436)),
                          _mm256_madd_epi16(shuffle(pixels, kGreenRed), word_pairs(23435, 13933)));
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

#else

template <YuvRounding kRounding>
inline int16x8_t scale(int16x8_t c, int16_t k) {
  const int16x8_t twice = vshlq_n_s16(c, 1);  // doubled once more by the multiplication: 4 c k >> 16
  return kRounding == kRound ? vqrdmulhq_n_s16(twice, k) : vqdmulhq_n_s16(twice, k);
}

template <YuvRounding kRounding>
inline int16x4_t green_term(int16x4_t v, int16x4_t u) {
  const int32x4_t sum = vmlal_n_s16(vmull_n_s16(v, -11436), u, -5532);
  return kRounding == kRound ? vrshrn_n_s32(sum, 14) : vshrn_n_s32(sum, 14);
}

/// Every chroma sample twice.
inline Terms split(int16x8_t term) {
  const uint8x8_t up = vqmovun_s16(term), down = vqmovun_s16(vnegq_s16(term));
  return {vcombine_u8(vzip1_u8(up, up), vzip2_u8(up, up)),
          vcombine_u8(vzip1_u8(down, down), vzip2_u8(down, down))};
}

template <bool kVFirst, YuvRounding kRounding>
inline ColorTerms decode_chroma(const uint8_t* chroma) {
  const uint8x8x2_t pairs = vld2_u8(chroma);
  const auto centred = [](uint8x8_t c) { return vreinterpretq_s16_u16(vsubl_u8(c, vdup_n_u8(128))); };
  const int16x8_t v = centred(pairs.val[kVFirst ? 0 : 1]), u = centred(pairs.val[kVFirst ? 1 : 0]);
  const int16x8_t green = vcombine_s16(green_term<kRounding>(vget_low_s16(v), vget_low_s16(u)),
                                       green_term<kRounding>(vget_high_s16(v), vget_high_s16(u)));
  return {split(scale<kRounding>(v, 22458)), split(green), split(scale<kRounding>(u, 28384))};
}

template <bool>
inline void store_pixels(uint8_t* p, Bytes a, Bytes b, Bytes c) {
  const uint8x16x3_t pixels = {{a, b, c}};
  vst3q_u8(p, pixels);
}

inline bool can_go_around_caches(const ColorRowsOut&) { return false; }
inline void settle() {}

/// The weights less 256 times (18, -73 + 256, 54): so the sum's low half and its high half fit words.
inline uint8x8_t grey_half(uint8x8_t b, uint8x8_t g, uint8x8_t r) {
  const uint16x8_t low = vmlal_u8(vmlal_u8(vmull_u8(b, vdup_n_u8(124)), g, vdup_n_u8(23)), r, vdup_n_u8(109));
  const uint16x8_t high = vmlsl_u8(vmlal_u8(vmull_u8(b, vdup_n_u8(18)), r, vdup_n_u8(54)), g, vdup_n_u8(73));
  return vadd_u8(g, vshrn_n_u16(vsraq_n_u16(high, low, 8), 8));
}

inline Bytes grey_block(const uint8_t* bgr) {
  const uint8x16x3_t p = vld3q_u8(bgr);
  return vcombine_u8(grey_half(vget_low_u8(p.val[0]), vget_low_u8(p.val[1]), vget_low_u8(p.val[2])),
                     grey_half(vget_high_u8(p.val[0]), vget_high_u8(p.val[1]), vget_high_u8(p.val[2])));
}

inline float32x4_t to_floats(uint16x4_t v) { return vcvtq_f32_u32(vmovl_u16(v)); }

/// The order of the additions is part of the result, and so is the rounding of each product.
inline uint16x4_t luma_of(uint16x4_t r, uint16x4_t g, uint16x4_t b) {
  const float32x4_t red_green =
      vaddq_f32(vmulq_n_f32(to_floats(r), 0.299f), vmulq_n_f32(to_floats(g), 0.587f));
  return vmovn_u32(vcvtq_u32_f32(vaddq_f32(red_green, vmulq_n_f32(to_floats(b), 0.114f))));
}

inline uint8x8_t luma_half(uint8x8_t r8, uint8x8_t g8, uint8x8_t b8) {
  const uint16x8_t r = vmovl_u8(r8), g = vmovl_u8(g8), b = vmovl_u8(b8);
  return vmovn_u16(vcombine_u16(luma_of(vget_low_u16(r), vget_low_u16(g), vget_low_u16(b)),
                                luma_of(vget_high_u16(r), vget_high_u16(g), vget_high_u16(b))));
}

/// Rounds n / 31250 half away from zero. The factor is one step above the nearest float: that alone takes
/// exact halves outward and moves no other |n| <= 15625 * 255 over its threshold.
inline int16x4_t chroma_quotient(int32x4_t n) {
  return vqmovn_s32(vcvtnq_s32_f32(vmulq_n_f32(vcvtq_f32_s32(n), 0x1.0c6f7cp-15f)));
}

/// The saturating narrowing makes 127 of 128; flipping the sign bit adds 128.
inline uint8x8_t chroma_of(int16x8_t r, int16x8_t g, int16x8_t b, int16_t of_r, int16_t of_g, int16_t of_b) {
  const int32x4_t low = vmlal_n_s16(vmlal_n_s16(vmull_n_s16(vget_low_s16(r), of_r), vget_low_s16(g), of_g),
                                    vget_low_s16(b), of_b);
  const int32x4_t high = vmlal_n_s16(vmlal_n_s16(vmull_n_s16(vget_high_s16(r), of_r), vget_high_s16(g), of_g),
                                     vget_high_s16(b), of_b);
  const int8x8_t c = vqmovn_s16(vcombine_s16(chroma_quotient(low), chroma_quotient(high)));
  return veor_u8(vreinterpret_u8_s8(c), vdup_n_u8(128));
}

template <int kRed, int kBlue>
inline void encode_block(const uint8_t* pixels, uint8_t* luma, uint8_t* vu) {
  const uint8x16x3_t p = vld3q_u8(pixels);
  const uint8x16_t red = p.val[kRed], green = p.val[1], blue = p.val[kBlue];
  vst1_u8(luma, luma_half(vget_low_u8(red), vget_low_u8(green), vget_low_u8(blue)));
  vst1_u8(luma + 8, luma_half(vget_high_u8(red), vget_high_u8(green), vget_high_u8(blue)));
  if (vu == nullptr) return;
  const auto even = [](uint8x16_t c) {
    return vreinterpretq_s16_u16(vandq_u16(vreinterpretq_u16_u8(c), vdupq_n_u16(0xFF)));
  };
  const int16x8_t r = even(red), g = even(green), b = even(blue);
  const uint8x8x2_t pairs = {
      {chroma_of(r, g, b, 15625, -13084, -2541), chroma_of(r, g, b, -5273, -10352, 15625)}};
  vst2_u8(vu, pairs);
}

inline float32x4_t low_floats(uint8x8_t v) { return to_floats(vget_low_u16(vmovl_u8(v))); }
inline float32x4_t high_floats(uint8x8_t v) { return to_floats(vget_high_u16(vmovl_u8(v))); }

inline float32x4_t hue_of(int16x4_t difference, float32x4_t divisor, float32x4_t thirds) {
  const float32x4_t sixties = vmulq_n_f32(vcvtq_f32_s32(vmovl_s16(difference)), 60.0f);
  return vaddq_f32(vdivq_f32(sixties, divisor), vmulq_n_f32(thirds, 120.0f));
}
inline float32x4_t saturation_of(float32x4_t delta, float32x4_t value) {
  return vdivq_f32(vmulq_n_f32(delta, 255.0f), vmaxq_f32(value, vdupq_n_f32(1.0f)));
}

/// Eight pixels. Grey needs no case of its own: it counts as red with a difference of 0, and a divisor of 1
/// in place of 0 makes that 0.
inline void hsv_block(const uint8_t* bgr, float* hsv) {
  const uint8x8x3_t p = vld3_u8(bgr);
  const uint8x8_t b = p.val[0], g = p.val[1], r = p.val[2];
  const uint8x8_t largest = vmax_u8(vmax_u8(r, g), b);
  const uint8x8_t delta = vsub_u8(largest, vmin_u8(vmin_u8(r, g), b));
  const uint8x8_t is_red = vceq_u8(largest, r), is_green = vceq_u8(largest, g);
  const int16x8_t difference = vreinterpretq_s16_u16(
      vsubl_u8(vbsl_u8(is_red, g, vbsl_u8(is_green, b, r)), vbsl_u8(is_red, b, vbsl_u8(is_green, r, g))));
  // Thirds of the circle to add: only a red can be negative, and then takes a whole turn.
  const uint8x8_t wrap = vand_u8(vclt_u8(g, b), vdup_n_u8(3));
  const uint8x8_t thirds = vbsl_u8(is_red, wrap, vbsl_u8(is_green, vdup_n_u8(1), vdup_n_u8(2)));
  const uint8x8_t divisor = vmax_u8(delta, vdup_n_u8(1));
  const float32x4_t low = low_floats(largest), high = high_floats(largest);
  const float32x4x3_t first = {{hue_of(vget_low_s16(difference), low_floats(divisor), low_floats(thirds)),
                                saturation_of(low_floats(delta), low), low}};
  vst3q_f32(hsv, first);
  const float32x4x3_t second = {{hue_of(vget_high_s16(difference), high_floats(divisor), high_floats(thirds)),
                                 saturation_of(high_floats(delta), high), high}};
  vst3q_f32(hsv + 12, second);
}
constexpr ptrdiff_t kHsvBlock = 8;

#endif

template <YuvFormat kFormat, YuvRounding kRounding, bool kAroundCaches, int kCount>
inline void decode_block(const YuvRows& src, const ColorRowsOut& dst, ptrdiff_t x) {
  const ColorTerms terms = decode_chroma<kFormat != kUvToRgb, kRounding>(src.chroma + x);
  for (int row = 0; row < kCount; ++row) {
    const Bytes luma = load(src.luma + row * src.luma_stride + x);
    const auto sum = [&](const Terms& t) { return subtract_saturating(add_saturating(luma, t.up), t.down); };
    const Bytes r = sum(terms.red), g = sum(terms.green), b = sum(terms.blue);
    const ptrdiff_t at = row * dst.stride;
    if constexpr (kFormat == kVuToBgrPlanes) {
      store(dst.planes[0] + at + x, b);
      store(dst.planes[1] + at + x, g);
      store(dst.planes[2] + at + x, r);
    } else if constexpr (kFormat == kVuToBgr) {
      store_pixels<kAroundCaches>(dst.planes[0] + at + 3 * x, b, g, r);
    } else {
      store_pixels<kAroundCaches>(dst.planes[0] + at + 3 * x, r, g, b);
    }
  }
}

/// One or two rows of at least kBytes columns; leaves an odd last column.
template <YuvFormat kFormat, YuvRounding kRounding, bool kAroundCaches, int kCount>
inline void decode_rows(const YuvRows& src, const ColorRowsOut& dst, ptrdiff_t n) {
  const ptrdiff_t pairs_end = n & ~ptrdiff_t{1};
  ptrdiff_t x = 0;
  for (; x + kBytes <= n; x += kBytes) decode_block<kFormat, kRounding, kAroundCaches, kCount>(src, dst, x);
  // The last block overlaps the one before.
  if (x < pairs_end) decode_block<kFormat, kRounding, false, kCount>(src, dst, pairs_end - kBytes);
}

/// The rows come by value: the compiler cannot know that no pixel is written over a pointer to them.
template <YuvFormat kFormat, YuvRounding kRounding, bool kAroundCaches>
void decode_pairs(YuvRows src, ColorRowsOut dst, ptrdiff_t n) {
  for (; src.count >= 2; src.count -= 2) {
    decode_rows<kFormat, kRounding, kAroundCaches, 2>(src, dst, n);
    src.luma += 2 * src.luma_stride;
    src.chroma += src.chroma_stride;
    dst.planes[0] += 2 * dst.stride;
    if constexpr (kFormat == kVuToBgrPlanes) {
      dst.planes[1] += 2 * dst.stride;
      dst.planes[2] += 2 * dst.stride;
    }
  }
  if (src.count == 1) decode_rows<kFormat, kRounding, kAroundCaches, 1>(src, dst, n);
}

template <YuvFormat kFormat, YuvRounding kRounding>
void decode(const YuvRows& src, const ColorRowsOut& dst, ptrdiff_t n) {
  ptrdiff_t done = 0;
  if (n >= kBytes) {
    done = n & ~ptrdiff_t{1};
    if (kFormat != kVuToBgrPlanes && dst.around_caches && can_go_around_caches(dst)) {
      decode_pairs<kFormat, kRounding, kFormat != kVuToBgrPlanes>(src, dst, n);
      settle();
    } else {
      decode_pairs<kFormat, kRounding, false>(src, dst, n);
    }
  }
  if (done == n) return;
  constexpr ptrdiff_t kStep = kFormat == kVuToBgrPlanes ? 1 : 3;
  YuvRows src_rest = src;
  src_rest.luma += done;
  src_rest.chroma += done;
  ColorRowsOut dst_rest = dst;
  for (uint8_t*& plane : dst_rest.planes) {
    if (plane != nullptr) plane += kStep * done;
  }
  portable::kColorRows.decode[kFormat][kRounding](src_rest, dst_rest, n - done);
}

template <int kRed, int kBlue>
void encode(const uint8_t* pixels, uint8_t* luma, uint8_t* vu, ptrdiff_t n) {
  const auto block = [&](ptrdiff_t x) {
    encode_block<kRed, kBlue>(pixels + 3 * x, luma + x, vu == nullptr ? nullptr : vu + x);
  };
  const ptrdiff_t pairs_end = n & ~ptrdiff_t{1};
  ptrdiff_t x = 0;
  for (; x + kBytes <= n; x += kBytes) block(x);
  if (x < pairs_end && x > 0) {
    block(pairs_end - kBytes);
    x = pairs_end;
  }
  constexpr auto rest = kRed == 0 ? &ColorRows::rgb_to_nv21 : &ColorRows::bgr_to_nv21;
  (portable::kColorRows.*rest)(pixels + 3 * x, luma + x, vu == nullptr ? nullptr : vu + x, n - x);
}

void bgr_to_grey(const uint8_t* bgr, uint8_t* grey, ptrdiff_t n) {
  ptrdiff_t i = 0;
  for (; i + kBytes <= n; i += kBytes) store(grey + i, grey_block(bgr + 3 * i));
  portable::kColorRows.bgr_to_grey(bgr + 3 * i, grey + i, n - i);
}

void bgr_to_hsv(const uint8_t* bgr, float* hsv, ptrdiff_t n) {
  ptrdiff_t i = 0;
  for (; i + kHsvBlock <= n; i += kHsvBlock) hsv_block(bgr + 3 * i, hsv + 3 * i);
  portable::kColorRows.bgr_to_hsv(bgr + 3 * i, hsv + 3 * i, n - i);
}

}  // namespace

constinit const ColorRows kColorRows = {
    {{decode<kVuToRgb, kTruncate>, decode<kVuToRgb, kRound>},
     {decode<kVuToBgr, kTruncate>, decode<kVuToBgr, kRound>},
     {decode<kUvToRgb, kTruncate>, decode<kUvToRgb, kRound>},
     {decode<kVuToBgrPlanes, kTruncate>, decode<kVuToBgrPlanes, kRound>}},
    encode<0, 2>,
    encode<2, 0>,
    bgr_to_grey,
    bgr_to_hsv,
};

}  // namespace morvale::MORVALE_VARIANT
