#pragma once

#include <arm_neon.h>

#include <cstddef>
#include <cstdint>

namespace morvale::MORVALE_VARIANT {

constexpr ptrdiff_t kBytes = 16;
using Bytes = uint8x16_t;

inline Bytes load(const uint8_t* p) { return vld1q_u8(p); }
inline void store(uint8_t* p, Bytes v) { vst1q_u8(p, v); }
inline Bytes all_bytes(int v) { return vdupq_n_u8(static_cast<uint8_t>(v)); }

inline Bytes add(Bytes a, Bytes b) { return vaddq_u8(a, b); }
inline Bytes subtract(Bytes a, Bytes b) { return vsubq_u8(a, b); }
inline Bytes add_saturating(Bytes a, Bytes b) { return vqaddq_u8(a, b); }
inline Bytes subtract_saturating(Bytes a, Bytes b) { return vqsubq_u8(a, b); }
inline Bytes equal(Bytes a, Bytes b) { return vceqq_u8(a, b); }
inline Bytes bit_and(Bytes a, Bytes b) { return vandq_u8(a, b); }
inline Bytes bit_xor(Bytes a, Bytes b) { return veorq_u8(a, b); }
inline Bytes smaller(Bytes a, Bytes b) { return vminq_u8(a, b); }

/// (a + b) >> 1.
inline Bytes average_down(Bytes a, Bytes b) { return vhaddq_u8(a, b); }

constexpr ptrdiff_t kFloats = 4;
using Floats = float32x4_t;

inline void store_floats(float* p, Floats v) { vst1q_f32(p, v); }
inline Floats all_floats(float v) { return vdupq_n_f32(v); }
inline Floats add(Floats a, Floats b) { return vaddq_f32(a, b); }
inline Floats subtract(Floats a, Floats b) { return vsubq_f32(a, b); }
inline Floats multiply(Floats a, Floats b) { return vmulq_f32(a, b); }
/// a b + c, rounded once.
inline Floats multiply_add(Floats a, Floats b, Floats c) { return vfmaq_f32(c, a, b); }

/// Stores a0 b0 c0 d0 a1 b1 c1 d1 ...: 4 * kBytes bytes.
inline void store4(uint8_t* p, Bytes a, Bytes b, Bytes c, Bytes d) {
  const uint8x16x4_t v = {{a, b, c, d}};
  vst4q_u8(p, v);  // a macro in clang: it takes no braces
}

}  // namespace morvale::MORVALE_VARIANT
