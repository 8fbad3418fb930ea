/// The rules of colour conversion stated a second time, colours worked out by hand, and the sizes at which a
/// converter is held to the rules.
#pragma once

#include <array>
#include <cmath>
#include <cstdint>
#include <string>

#include <gtest/gtest.h>

#include "fakes/guarded_bytes.h"

namespace color_rules {

using namespace guarded;
using Rgb = std::array<uint8_t, 3>;

inline uint8_t block_rule(int sum) {
  const double floor = std::floor(sum / 16384.0);
  return static_cast<uint8_t>(floor < 0 ? 0 : floor > 255 ? 255 : floor);
}

inline uint8_t pixel_rule(int sum) {
  const double nearest = std::floor(sum / 16384.0 + 0.5);
  return static_cast<uint8_t>(nearest < 0 ? 0 : nearest > 255 ? 255 : nearest);
}

inline Rgb rgb_of(int y, int u, int v, uint8_t (*rule)(int)) {
  return {rule(16384 * y + 22458 * (v - 128)), rule(16384 * y - 11436 * (v - 128) - 5532 * (u - 128)),
          rule(16384 * y + 28384 * (u - 128))};
}

inline Rgb pixel_at(const uint8_t* luma, const uint8_t* chroma, int width, int x, int y, bool u_first,
                    uint8_t (*rule)(int)) {
  const uint8_t* pair = chroma + (y / 2) * width + (x & ~1);
  return rgb_of(luma[y * width + x], pair[u_first ? 0 : 1], pair[u_first ? 1 : 0], rule);
}

struct PixelCase {
  uint8_t y, u, v;
  Rgb block, pixel;
  const char* why;
};
inline const PixelCase kPixelCases[] = {
    {0, 128, 128, {0, 0, 0}, {0, 0, 0}, "black"},
    {255, 128, 128, {255, 255, 255}, {255, 255, 255}, "white"},
    {100, 129, 130, {102, 98, 101}, {103, 98, 102}, "102.74, 98.27, 101.73: blocks truncate, pixels round"},
    {100, 94, 138, {113, 104, 41}, {114, 105, 41}, "G is 104.5 exactly: a half rounds up"},
    {100, 162, 118, {86, 95, 158}, {86, 96, 159}, "G is 95.5 exactly, from below the luma"},
    {4, 162, 118, {0, 0, 62}, {0, 0, 63}, "G is -0.5: the last sum that is not cut before the shift"},
    {1, 128, 127, {0, 1, 1}, {0, 2, 1}, "R is -0.37, G 1.70"},
    {0, 128, 129, {1, 0, 0}, {1, 0, 0}, "G is -0.70: below -8192, not the byte of -1"},
    {254, 255, 255, {255, 122, 255}, {255, 122, 255}, "R and B above white"},
    {10, 0, 0, {0, 142, 0}, {0, 143, 0}, "R and B below black, G 142.56"},
};

/// Two rows of twelve columns, NV21, all of them one colour.
inline Bytes one_colour(const PixelCase& c) {
  Bytes nv21(12 * 3, c.y);
  for (size_t i = 24; i < 36; i += 2) nv21[i] = c.v, nv21[i + 1] = c.u;
  return nv21;
}

inline Rgb rgb_from(const uint8_t* three, bool bgr) {
  return bgr ? Rgb{three[2], three[1], three[0]} : Rgb{three[0], three[1], three[2]};
}

inline const int kWidths[] = {1, 2, 3, 6, 7, 8, 9, 10, 14, 15, 16, 17, 24, 31, 32, 33, 50};
inline const int kHeights[] = {1, 2, 3, 4, 7};

template <typename Check>
void for_each_size(Check check) {
  uint32_t seed = 1;
  for (const int width : kWidths)
    for (const int height : kHeights)
      for (const Pattern pattern : kPatterns)
        for (const Edge edge : kEdges) {
          SCOPED_TRACE(size_text(width, height) + ", seed " + std::to_string(++seed) + ", pattern " +
                       std::to_string(static_cast<int>(pattern)));
          check(width, height, pattern, seed, edge);
        }
}

}  // namespace color_rules
