/// The vector operations that both sides have, under one name, so that one text of a kernel serves NEON (16
/// bytes) and AVX2 (32 bytes). What only one side has stays in the kernel that needs it.
///
/// Bytes is a vector of kBytes unsigned bytes, Words one of kBytes / 2 16-bit lanes. On AVX2 widen_low,
/// widen_high, narrow and the interleaves work within 128-bit halves: bytes that are widened and narrowed
/// again come back in order; what needs memory order says so.
#pragma once

#if defined(__AVX2__)
#include "kernels/simd_avx2.h"
#elif defined(__ARM_NEON)
#include "kernels/simd_neon.h"
#endif
