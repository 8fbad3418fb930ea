// Colour conversion: pixels and rows worked out by hand, then every converter against a second statement of
// its rule that goes pixel by pixel over the whole memory, slack included.
#include <morvale/imgproc/color_convert.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

#include "fakes/guarded_bytes.h"

namespace {

using namespace guarded;
using Rgb = std::array<uint8_t, 3>;

// ---- The rules, stated a second time ----

uint8_t block_rule(int sum) {
  const double floor = std::floor(sum / 16384.0);
  return static_cast<uint8_t>(floor < 0 ? 0 : floor > 255 ? 255 : floor);
}

uint8_t pixel_rule(int sum) {
  const double nearest = std::floor(sum / 16384.0 + 0.5);
  return static_cast<uint8_t>(nearest < 0 ? 0 : nearest > 255 ? 255 : nearest);
}

Rgb rgb_of(int y, int u, int v, uint8_t (*rule)(int)) {
  return {rule(16384 * y + 22458 * (v - 128)), rule(16384 * y - 11436 * (v - 128) - 5532 * (u - 128)),
          rule(16384 * y + 28384 * (u - 128))};
}

Rgb pixel_at(const uint8_t* luma, const uint8_t* chroma, int width, int x, int y, bool u_first,
             uint8_t (*rule)(int)) {
  const uint8_t* pair = chroma + (y / 2) * width + (x & ~1);
  return rgb_of(luma[y * width + x], pair[u_first ? 0 : 1], pair[u_first ? 1 : 0], rule);
}

struct PadConverter {
  const char* name;
  int (*convert)(const uint8_t*, uint8_t*, int, int, int, int, int, int);
  bool u_first;
  bool bgr;
  bool planar;
};
const PadConverter kPadConverters[] = {
    {"NV21toRGB_pad", NV21toRGB_pad, false, false, false},
    {"NV21toBGR_pad", NV21toBGR_pad, false, true, false},
    {"NV12toRGB_pad", NV12toRGB_pad, true, false, false},
    {"NV21toBGR_pad_lsi", NV21toBGR_pad_lsi, false, true, true},
};

struct PadCase {
  int width, height, out_width, out_height, right, bottom;
  const char* why;
};

size_t image_size(const PadCase& c) { return 3 * static_cast<size_t>(c.out_width * c.out_height); }
size_t source_size(const PadCase& c) { return static_cast<size_t>(c.width * (c.height + c.height / 2)); }

std::string describe(const PadConverter& k, const PadCase& c) {
  return std::string(k.name) + " " + size_text(c.width, c.height) + " into " +
         size_text(c.out_width, c.out_height) + ", margins " + std::to_string(c.right) + ", " +
         std::to_string(c.bottom) + ": " + c.why;
}

/// One channel of one pixel, also left of, right of and below the image: plain address arithmetic.
uint8_t& channel_at(const PadConverter& k, const PadCase& c, uint8_t* dst, int channel, int x, int y) {
  const int position = k.bgr ? 2 - channel : channel;
  if (k.planar) return dst[position * c.out_width * c.out_height + y * c.out_width + x];
  return dst[3 * (y * c.out_width + x) + position];
}

/// Runs one case in an image with `before` and `behind` bytes of room around it: canaries or pages without
/// access stand behind those.
template <typename Buffer, typename... Guard>
void expect_inside(const PadConverter& k, const PadCase& c, size_t before, size_t behind, Guard... guard) {
  SCOPED_TRACE(describe(k, c));
  const Bytes held = random_bytes(before + image_size(c) + behind, 1);
  for (const Edge edge : kEdges) {
    GuardedBytes src(random_bytes(source_size(c), 2), edge);
    Buffer dst(held, guard...);
    EXPECT_EQ(0, k.convert(src.data(), dst.data() + before, c.width, c.height, c.out_width, c.out_height,
                           c.right, c.bottom));
  }
}

// ---- Pixels by hand ----

struct PixelCase {
  uint8_t y, u, v;
  Rgb block, pixel;
  const char* why;
};
const PixelCase kPixelCases[] = {
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

Rgb rgb_from(const uint8_t* three, bool bgr) {
  return bgr ? Rgb{three[2], three[1], three[0]} : Rgb{three[0], three[1], three[2]};
}

TEST(ColorConvert, PixelsByHand) {
  for (const PixelCase& c : kPixelCases) {
    SCOPED_TRACE(c.why);
    // Twelve columns: eight follow the block rule of the padded converters, four the pixel rule.
    Bytes nv21(12 * 3), nv12;
    std::memset(nv21.data(), c.y, 24);
    for (size_t i = 24; i < 36; i += 2) nv21[i] = c.v, nv21[i + 1] = c.u;
    nv12 = nv21;
    for (size_t i = 24; i < 36; i += 2) std::swap(nv12[i], nv12[i + 1]);
    Bytes plain(12 * 2 * 3);
    NV21toRGB(nv21.data(), nv21.data() + 24, plain.data(), 12, 2);
    EXPECT_EQ(c.pixel, rgb_from(plain.data(), false)) << "NV21toRGB";
    EXPECT_EQ(c.pixel, rgb_from(&plain[23 * 3], false)) << "NV21toRGB, last pixel";
    Bytes padded(24 * 2 * 3);
    const auto pixel_in = [&](const PadConverter& k, size_t x) {
      if (k.planar) return Rgb{padded[96 + x], padded[48 + x], padded[x]};
      return rgb_from(&padded[3 * x], k.bgr);
    };
    for (const PadConverter& k : kPadConverters) {
      k.convert(k.u_first ? nv12.data() : nv21.data(), padded.data(), 12, 2, 24, 2, 4, 0);
      EXPECT_EQ(c.block, pixel_in(k, 7)) << k.name << ", last column of the block";
      EXPECT_EQ(c.pixel, pixel_in(k, 8)) << k.name << ", first column after it";
    }
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

// ---- The padded converters ----

/// Grey pictures: column x of the source is luma x, so an output row reads as the columns it was made from.
/// The image held 100 + column before: 100 and more are columns that were not written, or copied unwritten.
/// The texts give the row from column `first` on; those before it hold their own.
struct RowCase {
  int width, right, first;
  const char *row, *planar_row;
  const char* why;
};
const RowCase kRowCases[] = {
    {16, 3, 14, "14 15 15 14 13 119 120", "14 15 15 117 118 119 120",
     "no block begins below 16: single columns; the planes get the first of them only"},
    {12, 4, 10, "10 11 11 10 9 8 7 6 5 4 120", "10 11 11 10 9 8 7 6 5 4 120",
     "a margin of four is one block of eight"},
    {12, 9, 10, "10 11 11 10 9 8 7 6 5 4 3 121", "10 11 11 10 9 8 7 6 5 4 120 121",
     "a block to column 19, then columns 16 to 20 again; in planes column 16 alone"},
    {13, 3, 10, "10 11 11 11 11 10 9 8 7 6 5 121", "10 11 11 11 11 10 9 8 7 6 5 121",
     "odd width: column 12 copies 11, then a block from column 13"},
    {13, 1, 7, "7 117 116 115 114 113 113 114", "7 117 9 10 11 11 113 114",
     "columns 8 to 13 one by one, upwards, over the picture: 13 copies the new 12"},
    {13, 0, 7, "7 117 116 115 114 113 113 114", "7 117 9 10 11 11 113 114",
     "a margin of none rewrites the tail of the picture too"},
    {12, -9, 0, "123 122 121 3 4 5", "123 1 2 3 4 5", "a negative margin: columns 0 to 2 from 23 to 21"},
};

TEST(ColorConvertPad, RowsByHand) {
  for (const RowCase& c : kRowCases)
    for (const PadConverter& k : kPadConverters) {
      SCOPED_TRACE(std::string(k.name) + ": " + c.why);
      Bytes nv21(static_cast<size_t>(c.width * 3), 128);
      for (int i = 0; i < 2 * c.width; ++i) nv21[static_cast<size_t>(i)] = static_cast<uint8_t>(i % c.width);
      const PadCase pad = {c.width, 2, 24, 3, c.right, 0, ""};
      Bytes image(image_size(pad));
      for (size_t i = 0; i < image.size(); ++i)
        image[i] = static_cast<uint8_t>(100 + (k.planar ? i : i / 3) % 24);
      k.convert(nv21.data(), image.data(), c.width, 2, 24, 3, c.right, 0);
      for (int line = 0; line < 6; ++line) {
        const auto text = [&](int from, int to) {
          std::string columns;
          for (int x = from; x < to; ++x)
            columns += std::to_string(channel_at(k, pad, image.data(), line / 2, x, line % 2)) + " ";
          return columns;
        };
        const std::string expected = std::string(k.planar ? c.planar_row : c.row) + " ";
        EXPECT_EQ(expected, text(c.first, 24).substr(0, expected.size())) << "channel, row " << line;
        EXPECT_EQ(std::string("0 1 2 3 4 5 6 7 8 9 10 11 12 13 ").substr(0, text(0, c.first).size()),
                  text(0, c.first));
      }
    }
}

/// How far the interleaved converters leave the image, in bytes. The image has no other room than that.
struct ReachCase {
  PadCase pad;
  size_t before, behind;
};
const ReachCase kReachCases[] = {
    {{256, 144, 256, 256, 0, 112, "landscape, front camera"}, 0, 0},
    {{128, 72, 128, 128, 0, 56, "landscape, back camera"}, 0, 0},
    {{16, 4, 24, 6, 8, 2, "a margin of one block"}, 0, 0},
    {{100, 128, 128, 128, 28, 0, "portrait: blocks run four pixels onto the next row"}, 0, 12},
    {{100, 61, 128, 122, 28, 61, "odd height: the copied row carries its margin, the bottom too"}, 0, 0},
    {{15, 2, 16, 2, 1, 0, "a block from column 15: seven pixels behind the last row"}, 0, 21},
    {{12, 2, 24, 2, 12, 0, "a full margin: its last block also mirrors columns -1 to -4"}, 12, 12},
    {{13, 2, 13, 2, 0, 0, "column 8 is read from column 17: five pixels behind"}, 0, 15},
    {{115, 256, 256, 256, -141, 0, "1080 x 2400: writes 32 pixels before, reads six behind"}, 96, 18},
    {{256, 2, 256, 4, 0, 2, "two rows after shrinking"}, 0, 0},
    {{256, 1, 256, 2, 0, 1, "one row after shrinking: a copy of the row before the image"}, 768, 0},
};

TEST(ColorConvertPad, NothingBeyondTheDocumentedReachIsTouched) {
  for (const ReachCase& c : kReachCases)
    for (const PadConverter& k : kPadConverters) {
      PadCase roomy = c.pad;
      ++roomy.out_height;
      if (k.planar) expect_inside<CanaryBytes>(k, roomy, 1024, 1024);
      for (const Edge edge : kEdges)
        if (!k.planar) expect_inside<GuardedBytes>(k, c.pad, c.before, c.behind, edge);
    }
}

// ---- The converters without margins ----

const int kWidths[] = {1, 2, 3, 6, 7, 8, 9, 10, 14, 15, 16, 17, 24, 31, 32, 33, 50};
const int kHeights[] = {1, 2, 3, 4, 7};

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

/// The last block of a margin may run over into the next row, which is converted after it: each row is what
/// it is where there is room.
TEST(ColorConvertPad, RowsThatReachIntoTheNextOneAreConvertedInTurn) {
  constexpr int kHeight = 6, kRoomy = 96;
  for (int width = 8; width <= 40; ++width) {
    const auto pixels = static_cast<size_t>(width * kHeight);
    const Bytes nv21 = random_bytes(2 * pixels, static_cast<uint32_t>(width));
    for (int margin = 1; margin <= width; ++margin) {
      const auto end = static_cast<size_t>(width + margin);
      Bytes tight(3 * (end * kHeight + 8)), roomy(3 * size_t{kRoomy} * kHeight);
      NV21toRGB_pad(nv21.data(), tight.data(), width, kHeight, width + margin, kHeight, margin, 0);
      NV21toRGB_pad(nv21.data(), roomy.data(), width, kHeight, kRoomy, kHeight, margin, 0);
      for (size_t row = 0; row < kHeight; ++row) {
        ASSERT_TRUE(std::equal(tight.begin() + ptrdiff_t(3 * end * row),
                               tight.begin() + ptrdiff_t(3 * end * (row + 1)),
                               roomy.begin() + ptrdiff_t(3 * kRoomy * row)))
            << width << " + " << margin << ", row " << row;
      }
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
