/// The vector operations that both sides have, under one name, so that one text of a kernel serves NEON (16
/// bytes) and AVX2 (32 bytes). What only one side has stays in the kernel that needs it.
///
/// Bytes is a vector of kBytes unsigned bytes, Floats one of kFloats floats.
#pragma once

#if defined(__AVX2__)
#include "kernels/simd_avx2.h"
#elif defined(__ARM_NEON)
#include "kernels/simd_neon.h"
#endif

namespace morvale::MORVALE_VARIANT {

/// std::min is a template: the linker could share this copy of it with code for another processor.
inline int lesser(int a, int b) { return a < b ? a : b; }

}  // namespace morvale::MORVALE_VARIANT
