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

}  // namespace
}  // namespace morvale::MORVALE_VARIANT
