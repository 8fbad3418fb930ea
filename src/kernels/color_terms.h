/// What decoded chroma does to luma, as the vector loops of colour conversion carry it.
#pragma once

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

}  // namespace
}  // namespace morvale::MORVALE_VARIANT
