#include "kernels/face_rows.h"

#include <algorithm>

#include "rules/hsv_pixel.h"
#include "rules/label_wins.h"

namespace morvale::portable {
namespace {

struct Scores {
  int c0, c1, c2, c3, c4;
};

Scores scores_at(const uint8_t* const* scores, ptrdiff_t i) {
  return {scores[0][i], scores[1][i], scores[2][i], scores[3][i], scores[4][i]};
}

bool is_face(const Scores& s) {
  const bool won = wins(s.c2, s.c0, s.c1, s.c3, s.c4) || wins(s.c3, s.c0, s.c1, s.c2, s.c4);
  return won && std::max(s.c2, s.c3) >= kMinFaceScore;
}

/// Bit i of a row of words.
void put_bit(uint64_t* bits, ptrdiff_t stride, ptrdiff_t i, bool set) {
  uint64_t& word = bits[i / 64 * stride];
  if (i % 64 == 0) word = 0;
  word |= uint64_t{set} << (i % 64);
}

int64_t classify_faces(const uint8_t* const* scores, uint8_t* mask, uint64_t* bits, ptrdiff_t stride,
                       ptrdiff_t n) {
  int64_t humans = 0;
  for (ptrdiff_t i = 0; i < n; ++i) {
    const Scores s = scores_at(scores, i);
    const bool face = is_face(s);
    mask[i] = face ? 255 : 0;
    put_bit(bits, stride, i, face);
    humans += !wins(s.c0, s.c1, s.c2, s.c4);
  }
  return humans;
}

int64_t classify_persons(const uint8_t* const* scores, uint8_t* mask, uint64_t* bits, ptrdiff_t stride,
                         ptrdiff_t n) {
  int64_t label4 = 0;
  for (ptrdiff_t i = 0; i < n; ++i) {
    const Scores s = scores_at(scores, i);
    mask[i] = wins(std::max({s.c1, s.c2, s.c3}), s.c0, s.c4);
    put_bit(bits, stride, i, wins(s.c2, s.c0, s.c1, s.c3, s.c4));
    label4 += wins(s.c4, s.c0, s.c1, s.c2, s.c3);
  }
  return label4;
}

void widen_words(const uint64_t* left, const uint64_t* middle, const uint64_t* right, uint64_t* out,
                 ptrdiff_t n) {
  for (ptrdiff_t y = 0; y < n; ++y) {
    uint64_t word = middle[y];
    for (int k = 1; k <= 7; ++k) word |= middle[y] << k | left[y] >> (64 - k);
    for (int k = 1; k <= 8; ++k) word |= middle[y] >> k | right[y] << (64 - k);
    out[y] = word;
  }
}

void count_face(const uint8_t* score2, const uint8_t* mask, const uint8_t* luma, const uint8_t* rgb,
                ptrdiff_t n, FaceCounts& counts) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    if (mask[i] == 0) continue;
    if (score2[i] >= kLumaScore) {
      counts.luma_sum += luma[i];
      ++counts.luma_pixels;
      counts.above_200 += luma[i] > 200;
      counts.above_230 += luma[i] > 230;
    }
    if (score2[i] < kColourScore) continue;
    ++counts.colour_pixels;
    const Hsv hsv = hsv_of(rgb[3 * i], rgb[3 * i + 1], rgb[3 * i + 2]);
    uint32_t* bins = counts.bins[i % FaceCounts::kSets];
    ++bins[FaceCounts::kHueBins + static_cast<int>(hsv.hue) - FaceCounts::kLowestHue];
    ++bins[FaceCounts::kSaturationBins + hsv.saturation];
    ++bins[FaceCounts::kValueBins + hsv.value];
  }
}

}  // namespace

constinit const FaceRows kFaceRows = {classify_faces, classify_persons, widen_words, count_face};

}  // namespace morvale::portable
