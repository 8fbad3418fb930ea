/// Row loops of colour conversion (imgproc/color_convert.h and analysis/hsv.h state the rules).
#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/variants.h"

namespace morvale {

/// What a decoder reads and in which order it writes: chroma pairs V,U or U,V; pixels or planes.
enum YuvFormat { kVuToRgb, kVuToBgr, kUvToRgb, kVuToBgrPlanes, kYuvFormats };

/// How a Q14 sum becomes a byte. Whole blocks of eight truncate, everything else rounds; neighbouring pixels
/// of one flat area can so differ by one. Both are part of the output: do not unify.
enum YuvRounding { kTruncate, kRound, kYuvRoundings };

/// What a chroma byte less 128 adds to a channel, in 2^-14: 1.370705 V to red, -0.698001 V - 0.337633 U to
/// green, 1.732446 U to blue, each times 2^14. 14 bits, for the largest must fit a signed word and the sum of
/// two products with luma's 2^14 a double one.
constexpr int16_t kRedOfV = 22458, kGreenOfV = -11436, kGreenOfU = -5532, kBlueOfU = 28384;

/// What the channels add to grey, in 2^-16: 0.0722, 0.7152 and 0.2126. They sum to 2^16.
constexpr int kGreyOfBlue = 4732, kGreyOfGreen = 46871, kGreyOfRed = 13933;

/// `count` rows of luma. Every two share a row of chroma, which is decoded once for both.
struct YuvRows {
  const uint8_t* luma;
  ptrdiff_t luma_stride;
  const uint8_t* chroma;
  ptrdiff_t chroma_stride;
  int count;
};

/// Where decoded rows go: planes[0] alone for pixels of three bytes, else planes blue, green, red. The rows
/// lie `stride` bytes apart and must not overlap.
struct ColorRowsOut {
  uint8_t* planes[3];
  ptrdiff_t stride;
  /// The image is so large that its pixels may be written around the caches.
  bool around_caches;
};

struct ColorRows {
  /// Decodes n >= 0 columns, the first of which begins a chroma pair; of each row n luma bytes and n chroma
  /// bytes are read, one more when n is odd.
  using Decode = void (*)(const YuvRows& src, const ColorRowsOut& dst, ptrdiff_t n);
  Decode decode[kYuvFormats][kYuvRoundings];

  /// Luma bytes of n pixels, and unless vu is null a V,U pair from every second pixel, beginning with the
  /// first: n bytes, one more when n is odd.
  using Encode = void (*)(const uint8_t* pixels, uint8_t* luma, uint8_t* vu, ptrdiff_t n);
  Encode rgb_to_nv21, bgr_to_nv21;

  /// (kGreyOfBlue B + kGreyOfGreen G + kGreyOfRed R) >> 16 of n pixels.
  void (*bgr_to_grey)(const uint8_t* bgr, uint8_t* grey, ptrdiff_t n);

  /// Three floats for each of n pixels.
  void (*bgr_to_hsv)(const uint8_t* bgr, float* hsv, ptrdiff_t n);
};

MORVALE_FOR_EACH_VARIANT(extern const ColorRows kColorRows)

}  // namespace morvale
