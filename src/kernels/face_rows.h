/// Row loops of the scene analyses: who wins a cell, the window around a mask, the pixels of a face.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/variants.h"

namespace morvale {

/// The better of the two face scores must reach this, or the pixel is no face however clearly it wins.
constexpr int kMinFaceScore = 200;

/// Label-2 scores from which a masked pixel counts for the luma figures and for the colour figures.
constexpr int kLumaScore = 51;
constexpr int kColourScore = 201;

/// What the pixels of a face add up to. Sorted samples are not needed: every figure can be had from counts.
struct FaceCounts {
  /// Bins of one set: hues -60..299, saturations 0..255, values 0..255.
  static constexpr int kHues = 360, kBytes = 256, kLowestHue = -60;
  static constexpr int kHueBins = 0, kSaturationBins = kHues, kValueBins = kSaturationBins + kBytes;
  static constexpr int kBins = kValueBins + kBytes;

  /// Neighbouring pixels count in different sets: they are often of one colour, and the next addition to a
  /// bin waits for the last one. A bin's count is the sum over the sets.
  static constexpr int kSets = 2;

  int64_t luma_sum = 0;
  int64_t luma_pixels = 0;
  int64_t above_200 = 0, above_230 = 0;
  int64_t colour_pixels = 0;
  uint32_t bins[kSets][kBins] = {};
};

struct FaceRows {
  /// Front camera. scores: the rows of labels 0..4. A pixel is a face when label 2 or label 3 beats the four
  /// others and has a score of kMinFaceScore at least: mask 255, else 0, and bit i % 64 of word bits[i / 64 *
  /// stride]; unused high bits of the last word are 0. Returns the number of human pixels: those where label
  /// 0 does not beat labels 1, 2 and 4. Label 3 takes no part in that, on purpose: where it is second to none
  /// but the background, the pixel is no human.
  int64_t (*classify_faces)(const uint8_t* const* scores, uint8_t* mask, uint64_t* bits, ptrdiff_t stride,
                            ptrdiff_t n);

  /// Back camera. mask: 1 where the largest of labels 1, 2, 3 beats labels 0 and 4, else 0; bits, as above:
  /// where label 2 beats the others. Returns the number of cells where label 4 does.
  int64_t (*classify_persons)(const uint8_t* const* scores, uint8_t* mask, uint64_t* bits, ptrdiff_t stride,
                              ptrdiff_t n);

  /// Per row, bit x of the word becomes the OR of bits x - 7 .. x + 8. left and right are the neighbouring
  /// words of the n rows: bit 0 of `middle` follows bit 63 of `left`.
  void (*widen_words)(const uint64_t* left, const uint64_t* middle, const uint64_t* right, uint64_t* out,
                      ptrdiff_t n);

  /// Adds a row of n pixels to a face's counts: those with a nonzero mask, to the luma figures from
  /// kLumaScore on, to the bins from kColourScore on. rgb has three bytes a pixel; hue, saturation and value
  /// are those of hsv_of (rules/hsv_pixel.h), the hue truncated toward zero.
  void (*count_face)(const uint8_t* score2, const uint8_t* mask, const uint8_t* luma, const uint8_t* rgb,
                     ptrdiff_t n, FaceCounts& counts);
};

MORVALE_FOR_EACH_VARIANT(extern const FaceRows kFaceRows)

}  // namespace morvale
