// NV21 to colours without margins: pixels worked out by hand, then every converter against a second statement
// of its rule that goes pixel by pixel over the whole memory, slack included.
#include <morvale/imgproc/color_convert.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>

#include "imgproc/color_rules.h"

namespace {

using namespace color_rules;

TEST(ColorConvert, PixelsByHand) {
  for (const PixelCase& c : kPixelCases) {
    SCOPED_TRACE(c.why);
    const Bytes nv21 = one_colour(c);
    Bytes plain(12 * 2 * 3);
    NV21toRGB(nv21.data(), nv21.data() + 24, plain.data(), 12, 2);
    EXPECT_EQ(c.pixel, rgb_from(plain.data(), false)) << "NV21toRGB";
    EXPECT_EQ(c.pixel, rgb_from(&plain[23 * 3], false)) << "NV21toRGB, last pixel";
    const Bytes one_block = {c.y, c.y, c.y, c.y, c.y, c.y, c.y, c.y, c.v, c.u, c.v, c.u, c.v, c.u, c.v, c.u};
    Bytes bgr(24), b(8), g(8), r(8);
    uint8_t* const planes[] = {b.data(), g.data(), r.data()};
    NV21toBGR(one_block.data(), bgr.data(), 8, 1);
    NV21toBGR_planar(one_block.data(), planes, 8, 1);
    EXPECT_EQ(c.block, rgb_from(&bgr[21], true)) << "NV21toBGR";
    EXPECT_EQ(c.block, (Rgb{r[7], g[7], b[7]})) << "NV21toBGR_planar";
  }
}

TEST(ColorConvert, EveryChromaPairMatchesTheRuleInBothRoundings) {
  for (const int luma : {0, 1, 77, 128, 254, 255}) {
    // One row pair with every U and V: 2 x 65536 columns, all of them blocks; then the same pixel by pixel.
    constexpr int kWidth = 2 * 65536;
    Bytes nv21(kWidth * 3, static_cast<uint8_t>(luma));
    for (size_t i = 0; i < 65536; ++i) {
      nv21[2 * kWidth + 2 * i] = static_cast<uint8_t>(i >> 8);
      nv21[2 * kWidth + 2 * i + 1] = static_cast<uint8_t>(i);
    }
    Bytes block(kWidth * 2 * 3), pixel(kWidth * 2 * 3);
    NV21toBGR(nv21.data(), block.data(), kWidth, 2);
    NV21toRGB(nv21.data(), nv21.data() + 2 * kWidth, pixel.data(), kWidth, 2);
    for (int i = 0; i < 65536; ++i) {
      const size_t at = static_cast<size_t>(i) * 6;
      ASSERT_EQ(rgb_of(luma, i & 255, i >> 8, block_rule), rgb_from(&block[at], true)) << luma << " " << i;
      ASSERT_EQ(rgb_of(luma, i & 255, i >> 8, pixel_rule), rgb_from(&pixel[at], false)) << luma << " " << i;
    }
  }
}

TEST(ColorConvertPlain, NV21toRGBAtEverySize) {
  for_each_size([](int width, int height, Pattern pattern, uint32_t seed, Edge edge) {
    const auto pixels = static_cast<size_t>(width * height);
    // The pair of an odd last column ends one byte past its row.
    const auto chroma_size = static_cast<size_t>((height + 1) / 2 * width + width % 2);
    GuardedBytes luma(pattern_bytes(pattern, pixels, seed), edge);
    GuardedBytes vu(pattern_bytes(pattern, chroma_size, seed + 7000), edge);
    CanaryBytes rgb(3 * pixels);
    Bytes expected;
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < width; ++x)
        for (const uint8_t byte : pixel_at(luma.data(), vu.data(), width, x, y, false, pixel_rule))
          expected.push_back(byte);
    EXPECT_EQ(0, NV21toRGB(luma.data(), vu.data(), rgb.data(), width, height));
    expect_same(expected, rgb.bytes(), 3 * static_cast<size_t>(width), "NV21toRGB");
  });
}

TEST(ColorConvertPlain, BlocksRunPastTheRowAndNoFurther) {
  for_each_size([](int width, int height, Pattern pattern, uint32_t seed, Edge edge) {
    const int whole = (width + 7) & ~7;
    const auto overrun = static_cast<size_t>(whole - width);
    const auto pixels = static_cast<size_t>(width * height) + overrun;
    GuardedBytes nv21(
        pattern_bytes(pattern, static_cast<size_t>(width * (height + (height + 1) / 2)) + overrun, seed),
        edge);
    Bytes bgr(3 * pixels);
    for (int y = 0; y < height; ++y)
      for (int x = 0; x < whole; ++x) {
        const uint8_t* const chroma = nv21.data() + width * height;
        const Rgb rgb = pixel_at(nv21.data(), chroma, width, x, y, false, block_rule);
        std::copy(rgb.rbegin(), rgb.rend(), bgr.begin() + 3 * (y * width + x));
      }
    CanaryBytes interleaved(3 * pixels), b(pixels), g(pixels), r(pixels);
    EXPECT_EQ(0, NV21toBGR(nv21.data(), interleaved.data(), width, height));
    expect_same(bgr, interleaved.bytes(), 3 * static_cast<size_t>(width), "NV21toBGR");
    uint8_t* const planes[] = {b.data(), g.data(), r.data()};
    EXPECT_EQ(0, NV21toBGR_planar(nv21.data(), planes, width, height));
    for (size_t plane = 0; plane < 3; ++plane) {
      Bytes expected(pixels);
      for (size_t i = 0; i < pixels; ++i) expected[i] = bgr[3 * i + plane];
      expect_same(expected, {planes[plane], pixels}, static_cast<size_t>(width),
                  "NV21toBGR_planar, plane " + std::to_string(plane));
    }
  });
}

TEST(ColorConvertPlain, SizesBelowOneWriteNothing) {
  const Bytes src(64, 77), held = random_bytes(96, 5);
  CanaryBytes dst(held);
  uint8_t* const out = dst.data();
  uint8_t* const planes[] = {out, out + 32, out + 64};
  for (const auto& [width, height] : kEmptySizes) {
    EXPECT_EQ(0, NV21toRGB(src.data(), src.data(), out, width, height));
    EXPECT_EQ(0, NV21toBGR(src.data(), out, width, height));
    EXPECT_EQ(0, NV21toBGR_planar(src.data(), planes, width, height));
    EXPECT_EQ(0, RGBtoNV21(src.data(), out, out + 48, width, height));
    EXPECT_EQ(0, BGRtoNV21(src.data(), out, width, height));
    EXPECT_EQ(0, BGR2GRAY(src.data(), out, width, height));
    expect_same(held, dst.bytes(), 8, size_text(width, height));
  }
}

}  // namespace
