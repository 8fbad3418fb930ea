/// The steps of the colour loops on NEON. color_rows_simd.cpp strings them together.
#pragma once

#include "kernels/color_rows.h"
#include "kernels/color_terms.h"
#include "kernels/simd.h"

namespace morvale::MORVALE_VARIANT {
namespace {

template <YuvRounding kRounding>
inline int16x8_t scale(int16x8_t c, int16_t k) {
  const int16x8_t twice = vshlq_n_s16(c, 1);  // doubled once more by the multiplication: 4 c k >> 16
  return kRounding == kRound ? vqrdmulhq_n_s16(twice, k) : vqdmulhq_n_s16(twice, k);
}

template <YuvRounding kRounding>
inline int16x4_t green_term(int16x4_t v, int16x4_t u) {
  const int32x4_t sum = vmlal_n_s16(vmull_n_s16(v, kGreenOfV), u, kGreenOfU);
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
  return {split(scale<kRounding>(v, kRedOfV)), split(green), split(scale<kRounding>(u, kBlueOfU))};
}

template <bool>
inline void store_pixels(uint8_t* p, Bytes a, Bytes b, Bytes c) {
  const uint8x16x3_t pixels = {{a, b, c}};
  vst3q_u8(p, pixels);
}

inline bool can_go_around_caches(const ColorRowsOut&) { return false; }
inline void settle() {}

/// The weights of all three channels sum to 2^16, so grey is green and a part of what blue and red are more
/// than it.
inline int16x8_t grey_less_green(uint16x8_t blue_more, uint16x8_t red_more) {
  const int16x8_t b = vreinterpretq_s16_u16(blue_more), r = vreinterpretq_s16_u16(red_more);
  const int32x4_t low = vmlal_n_s16(vmull_n_s16(vget_low_s16(b), kGreyOfBlue), vget_low_s16(r), kGreyOfRed);
  const int32x4_t high = vmlal_high_n_s16(vmull_high_n_s16(b, kGreyOfBlue), r, kGreyOfRed);
  return vuzp2q_s16(vreinterpretq_s16_s32(low), vreinterpretq_s16_s32(high));
}

inline Bytes grey_block(const uint8_t* bgr) {
  const uint8x16x3_t p = vld3q_u8(bgr);
  const Bytes b = p.val[0], g = p.val[1], r = p.val[2];
  const int16x8_t low =
      grey_less_green(vsubl_u8(vget_low_u8(b), vget_low_u8(g)), vsubl_u8(vget_low_u8(r), vget_low_u8(g)));
  const int16x8_t high = grey_less_green(vsubl_high_u8(b, g), vsubl_high_u8(r, g));
  return vaddq_u8(g, vuzp1q_u8(vreinterpretq_u8_s16(low), vreinterpretq_u8_s16(high)));
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

inline Bytes luma_in_floats(Bytes r, Bytes g, Bytes b) {
  return vcombine_u8(luma_half(vget_low_u8(r), vget_low_u8(g), vget_low_u8(b)),
                     luma_half(vget_high_u8(r), vget_high_u8(g), vget_high_u8(b)));
}

/// 299 r + 587 g + 114 b by 1000: a quotient that may be one too small, and what is left. Its high byte is
/// summed apart, modulo 256: nothing is left of 2000 and more.
struct Thousandths {
  Bytes quotient;
  uint16x8_t rest[2];
};
inline Thousandths thousandths(Bytes r, Bytes g, Bytes b) {
  const auto sum = [](uint8x8_t x, int of_x, uint8x8_t y, int of_y, uint8x8_t z, int of_z) {
    const auto weight = [](int w) { return vdup_n_u8(static_cast<uint8_t>(w)); };
    return vmlal_u8(vmlal_u8(vmull_u8(x, weight(of_x)), y, weight(of_y)), z, weight(of_z));
  };
  const auto low = [](Bytes v) { return vget_low_u8(v); };
  const auto high = [](Bytes v) { return vget_high_u8(v); };
  const Bytes q = vcombine_u8(vshrn_n_u16(sum(low(r), 76, low(g), 150, low(b), 29), 8),
                              vshrn_n_u16(sum(high(r), 76, high(g), 150, high(b), 29), 8));
  const Bytes high_byte = vsubq_u8(vaddq_u8(r, vshlq_n_u8(g, 1)), vshlq_n_u8(q, 2));
  const uint16x8_t of_low = vmlal_u8(sum(low(r), 43, low(g), 75, low(b), 114), low(q), vdup_n_u8(24));
  const uint16x8_t of_high = vmlal_u8(sum(high(r), 43, high(g), 75, high(b), 114), high(q), vdup_n_u8(24));
  return {
      q,
      {vaddq_u16(of_low, vshll_n_u8(low(high_byte), 8)), vaddq_u16(of_high, vshll_high_n_u8(high_byte, 8))}};
}

/// The greys whose float sum stays below the grey itself, a bit each.
struct LowGreys {
  uint8_t bits[32];
};
constexpr LowGreys low_greys() {
  LowGreys greys{};
  for (int grey = 0; grey < 256; ++grey) {
    const auto v = static_cast<float>(grey);
    const bool low = static_cast<int>(0.299f * v + 0.587f * v + 0.114f * v) < grey;
    greys.bits[grey / 8] = static_cast<uint8_t>(greys.bits[grey / 8] | low << grey % 8);
  }
  return greys;
}

inline bool any(Bytes mask) { return vmaxvq_u32(vreinterpretq_u32_u8(mask)) != 0; }

/// For blocks with sums that are multiples of 1000: floats may make one less of them. All greys are such
/// multiples, and a picture may have no other colours, so they are looked up; everything else is left to the
/// floats.
inline Bytes luma_of_multiples(Bytes luma, Bytes multiple, Bytes r, Bytes g, Bytes b) {
  const Bytes grey = vandq_u8(vceqq_u8(r, g), vceqq_u8(g, b));
  if (any(vbicq_u8(multiple, grey))) return luma_in_floats(r, g, b);
  static constexpr LowGreys kLow = low_greys();
  constexpr uint8_t kBit[16] = {1, 2, 4, 8, 16, 32, 64, 128};
  const uint8x16x2_t table = {{load(kLow.bits), load(kLow.bits + 16)}};
  const Bytes eight = vqtbl2q_u8(table, vshrq_n_u8(g, 3)),
              bit = vqtbl1q_u8(load(kBit), vandq_u8(g, vdupq_n_u8(7)));
  return vaddq_u8(luma, vandq_u8(grey, vtstq_u8(eight, bit)));  // a mask is minus one
}

/// The float sum, cut to a whole number, is the quotient by 1000 for all colours but some multiples of 1000.
inline Bytes luma_block(Bytes r, Bytes g, Bytes b) {
  const Thousandths sum = thousandths(r, g, b);
  const uint16x8_t thousand = vdupq_n_u16(1000);
  const auto bytes = [](uint16x8_t low, uint16x8_t high) {
    return vuzp1q_u8(vreinterpretq_u8_u16(low), vreinterpretq_u8_u16(high));
  };
  const auto is_multiple = [&](uint16x8_t rest) {
    return vorrq_u16(vceqzq_u16(rest), vceqq_u16(rest, thousand));
  };
  const Bytes one_more = bytes(vcgeq_u16(sum.rest[0], thousand), vcgeq_u16(sum.rest[1], thousand));
  const Bytes multiple = bytes(is_multiple(sum.rest[0]), is_multiple(sum.rest[1]));
  const Bytes luma = vsubq_u8(sum.quotient, one_more);
  if (__builtin_expect(any(multiple), 0)) return luma_of_multiples(luma, multiple, r, g, b);
  return luma;
}

/// Rounds n / 31250 half away from zero, from 128 n: first to 2^-16, where the next |n| <= 15625 * 255 beside
/// a half is two steps away; then halves go up, and negative ones one step down before that.
inline int16x4_t chroma_quotient(int32x4_t n128) {
  constexpr int32_t kFactor = 35184372;  // 2^(31 + 16 - 7) / 31250
  const int32x4_t fine = vqrdmulhq_n_s32(n128, kFactor);
  return vqrshrn_n_s32(vsraq_n_s32(fine, fine, 31), 16);
}

/// From 128 times the channels. The saturating narrowing makes 127 of 128; flipping the sign bit adds 128.
inline uint8x8_t chroma_of(int16x8_t r, int16x8_t g, int16x8_t b, int16_t of_r, int16_t of_g, int16_t of_b) {
  const int32x4_t low = vmlal_n_s16(vmlal_n_s16(vmull_n_s16(vget_low_s16(r), of_r), vget_low_s16(g), of_g),
                                    vget_low_s16(b), of_b);
  const int32x4_t high = vmlal_high_n_s16(vmlal_high_n_s16(vmull_high_n_s16(r, of_r), g, of_g), b, of_b);
  const int8x8_t c = vqmovn_s16(vcombine_s16(chroma_quotient(low), chroma_quotient(high)));
  return veor_u8(vreinterpret_u8_s8(c), vdup_n_u8(128));
}

template <int kRed, int kBlue>
inline void encode_block(const uint8_t* pixels, uint8_t* luma, uint8_t* vu) {
  const uint8x16x3_t p = vld3q_u8(pixels);
  const uint8x16_t red = p.val[kRed], green = p.val[1], blue = p.val[kBlue];
  store(luma, luma_block(red, green, blue));
  if (vu == nullptr) return;
  const auto even = [](uint8x16_t c) {
    return vreinterpretq_s16_u16(vshrq_n_u16(vshlq_n_u16(vreinterpretq_u16_u8(c), 8), 1));
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

}  // namespace
}  // namespace morvale::MORVALE_VARIANT
