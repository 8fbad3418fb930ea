// Colours to NV21 and grey: pixels worked out by hand, then every size against a second statement of the
// rule.
#include <morvale/imgproc/color_convert.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "imgproc/color_rules.h"

namespace {

using namespace color_rules;

struct NV21Case {
  uint8_t r, g, b, luma, v, u;
  const char* why;
};
const NV21Case kNV21Cases[] = {
    {0, 0, 0, 0, 128, 128, "black"},
    {255, 255, 255, 255, 128, 128, "white"},
    {255, 0, 0, 76, 255, 85, "red: Cr 127.5 rounds to 128 and is clamped, luma 76.245"},
    {0, 0, 255, 29, 107, 255, "blue: Cb 127.5 is clamped too"},
    {0, 255, 0, 149, 21, 44, "green: Cr -106.77, Cb -84.47"},
    {0, 72, 24, 45, 96, 116, "luma 45 in float, a hair below in double"},
    {8, 80, 32, 52, 96, 116, "luma 53 by the exact weights, a hair below in float"},
    {0, 0, 1, 0, 128, 129, "Cb 0.5 rounds away from zero"},
    {51, 51, 0, 45, 132, 102, "Cb -25.5 rounds away from zero"},
    {6, 5, 5, 5, 129, 128, "Cr 0.5 less a double's last bit: 0.5 once it is a float"},
    {2, 3, 3, 2, 127, 128, "Cr -0.5 in double, less in a sum of floats"},
};

TEST(ColorConvertToNV21, PixelsByHand) {
  for (const NV21Case& c : kNV21Cases) {
    SCOPED_TRACE(c.why);
    // Chroma comes from the top-left pixel alone: the other three would change it.
    const Bytes rgb = {c.r, c.g, c.b, 255, 255, 255, 9, 200, 30, 77, 1, 250};
    const Bytes bgr = {c.b, c.g, c.r, 255, 255, 255, 30, 200, 9, 250, 1, 77};
    const Bytes expected = {c.luma, 255, 123, 52, c.v, c.u};
    CanaryBytes two_planes(6), one_image(6);
    EXPECT_EQ(0, RGBtoNV21(rgb.data(), two_planes.data(), two_planes.data() + 4, 2, 2));
    EXPECT_EQ(0, BGRtoNV21(bgr.data(), one_image.data(), 2, 2));
    expect_same(expected, two_planes.bytes(), 2, "RGBtoNV21");
    expect_same(expected, one_image.bytes(), 2, "BGRtoNV21");
  }
}

uint8_t chroma_byte(double value) {
  const float narrowed = static_cast<float>(value);
  return static_cast<uint8_t>(std::min(std::round(narrowed) + 128.0F, 255.0F));
}

TEST(ColorConvertToNV21, EverySizeMatchesTheRule) {
  for_each_size([](int width, int height, Pattern pattern, uint32_t seed, Edge edge) {
    const auto pixels = static_cast<size_t>(width * height);
    const auto chroma_size = static_cast<size_t>((height + 1) / 2 * width + width % 2);
    const Bytes rgb = pattern_bytes(pattern, 3 * pixels, seed);
    Bytes luma(pixels), vu = random_bytes(chroma_size, seed), bgr(3 * pixels);
    const Bytes held = vu;
    for (size_t i = 0; i < pixels; ++i) {
      const uint8_t r = rgb[3 * i], g = rgb[3 * i + 1], b = rgb[3 * i + 2];
      bgr[3 * i] = b, bgr[3 * i + 1] = g, bgr[3 * i + 2] = r;
      luma[i] = static_cast<uint8_t>(std::min(0.299F * r + 0.587F * g + 0.114F * b, 255.0F));
      const size_t x = i % static_cast<size_t>(width), y = i / static_cast<size_t>(width);
      if (x % 2 != 0 || y % 2 != 0) continue;
      vu[y / 2 * static_cast<size_t>(width) + x] = chroma_byte(0.5 * r - 0.418688 * g - 0.081312 * b);
      vu[y / 2 * static_cast<size_t>(width) + x + 1] = chroma_byte(-0.168736 * r - 0.331264 * g + 0.5 * b);
    }
    const auto row = static_cast<size_t>(width);
    GuardedBytes rgb_src(rgb, edge), bgr_src(bgr, edge);
    CanaryBytes luma_dst(pixels), vu_dst(held);
    EXPECT_EQ(0, RGBtoNV21(rgb_src.data(), luma_dst.data(), vu_dst.data(), width, height));
    expect_same(luma, luma_dst.bytes(), row, "RGBtoNV21, luma");
    expect_same(vu, vu_dst.bytes(), row, "RGBtoNV21, chroma");
    Bytes expected = luma, image(pixels);
    expected.insert(expected.end(), vu.begin(), vu.end());
    image.insert(image.end(), held.begin(), held.end());
    CanaryBytes image_dst(image);
    EXPECT_EQ(0, BGRtoNV21(bgr_src.data(), image_dst.data(), width, height));
    expect_same(expected, image_dst.bytes(), row, "BGRtoNV21");
  });
}

TEST(ColorConvertToGrey, PixelsByHand) {
  struct {
    uint8_t b, g, r, grey;
    const char* why;
  } const cases[] = {
      {255, 255, 255, 255, "the weights sum to one"},
      {255, 0, 0, 18, "18.41"},
      {0, 255, 0, 182, "182.37"},
      {0, 0, 255, 54, "54.21"},
      {160, 101, 1, 84, "84 exactly: any smaller weight gives 83"},
      {165, 106, 6, 89, "89 exactly, with more red"},
      {1, 236, 43, 177, "178 less 1/65536: rounding or any larger weight gives 178"},
      {6, 241, 48, 182, "183 less 1/65536"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    // Nine pixels: a block of eight and a single one.
    Bytes bgr;
    for (int i = 0; i < 9; ++i) bgr.insert(bgr.end(), {c.b, c.g, c.r});
    Bytes grey(9);
    BGR2GRAY(bgr.data(), grey.data(), 9, 1);
    EXPECT_EQ(Bytes(9, c.grey), grey);
  }
}

TEST(ColorConvertToGrey, EverySizeMatchesTheRule) {
  for_each_size([](int width, int height, Pattern pattern, uint32_t seed, Edge edge) {
    const auto pixels = static_cast<size_t>(width * height);
    GuardedBytes bgr(pattern_bytes(pattern, 3 * pixels, seed), edge);
    CanaryBytes grey(pixels);
    Bytes expected(pixels);
    for (size_t i = 0; i < pixels; ++i) {
      const uint8_t* const p = bgr.data() + 3 * i;
      expected[i] = static_cast<uint8_t>((4732 * p[0] + 46871 * p[1] + 13933 * p[2]) / 65536);
    }
    EXPECT_EQ(0, BGR2GRAY(bgr.data(), grey.data(), width, height));
    expect_same(expected, grey.bytes(), static_cast<size_t>(width), "BGR2GRAY");
  });
}

}  // namespace
