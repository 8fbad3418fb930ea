// The padded converters: pixels, rows and reach worked out by hand.
#include <morvale/imgproc/color_convert.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <utility>

#include "imgproc/color_rules.h"

namespace {

using namespace color_rules;

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

TEST(ColorConvertPad, PixelsByHand) {
  for (const PixelCase& c : kPixelCases) {
    SCOPED_TRACE(c.why);
    // Eight columns follow the block rule, the other four the pixel rule.
    const Bytes nv21 = one_colour(c);
    Bytes nv12 = nv21;
    for (size_t i = 24; i < 36; i += 2) std::swap(nv12[i], nv12[i + 1]);
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
  }
}

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

/// The last block of a margin may run over into the next row, which is converted after it: each row is what
/// it is where there is room.
TEST(ColorConvertPad, RowsThatReachIntoTheNextOneAreConvertedInTurn) {
  constexpr int kHeight = 6, kRoomy = 96, kBlock = 8;
  for (int width = 8; width <= 40; ++width) {
    const auto pixels = static_cast<size_t>(width * kHeight);
    const Bytes nv21 = random_bytes(2 * pixels, static_cast<uint32_t>(width));
    for (int margin = 1; margin <= width; ++margin) {
      const auto end = static_cast<size_t>(width + margin);
      // The last block of a wide margin also mirrors columns left of the picture.
      Bytes tight(3 * (end * kHeight + 2 * kBlock)), roomy(3 * (size_t{kRoomy} * kHeight + 2 * kBlock));
      const auto tight_image = tight.begin() + 3 * kBlock, roomy_image = roomy.begin() + 3 * kBlock;
      NV21toRGB_pad(nv21.data(), &*tight_image, width, kHeight, width + margin, kHeight, margin, 0);
      NV21toRGB_pad(nv21.data(), &*roomy_image, width, kHeight, kRoomy, kHeight, margin, 0);
      for (size_t row = 0; row < kHeight; ++row) {
        ASSERT_TRUE(std::equal(tight_image + ptrdiff_t(3 * end * row),
                               tight_image + ptrdiff_t(3 * end * (row + 1)),
                               roomy_image + ptrdiff_t(3 * kRoomy * row)))
            << width << " + " << margin << ", row " << row;
      }
    }
  }
}

}  // namespace
