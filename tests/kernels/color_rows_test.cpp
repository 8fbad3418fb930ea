/// The colour loops, every form against the portable one: lengths around the blocks between forbidden pages,
/// then every chroma pair and every colour.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "kernels/kernel_cases.h"

namespace {

using namespace morvale;
using guarded::Bytes;
using guarded::Edge;
using guarded::GuardedBytes;
using guarded::Pattern;
using guarded::pattern_bytes;
using kernel_cases::for_every_case;

struct DecodeCase {
  YuvFormat format;
  YuvRounding rounding;
  int rows;

  size_t row_bytes(size_t n) const { return format == kVuToBgrPlanes ? n : 3 * n; }
  size_t planes() const { return format == kVuToBgrPlanes ? 3 : 1; }
  /// All rows of a plane, then the next plane.
  ColorRowsOut out(uint8_t* dst, size_t n, bool around_caches) const {
    const size_t plane = row_bytes(n) * static_cast<size_t>(rows);
    ColorRowsOut result = {{dst}, static_cast<ptrdiff_t>(row_bytes(n)), around_caches};
    for (size_t k = 1; k < planes(); ++k) result.planes[k] = dst + k * plane;
    return result;
  }
};

std::vector<DecodeCase> decode_cases() {
  std::vector<DecodeCase> cases;
  for (int format = 0; format < kYuvFormats; ++format) {
    for (const YuvRounding rounding : {kTruncate, kRound}) {
      for (const int rows : {1, 2, 5}) cases.push_back({static_cast<YuvFormat>(format), rounding, rows});
    }
  }
  return cases;
}

std::string name(const DecodeCase& c) {
  return "format " + std::to_string(c.format) + ", rounding " + std::to_string(c.rounding) + ", rows " +
         std::to_string(c.rows);
}

TEST(ColorRows, DecodeReadsAndWritesItsColumnsOnly) {
  for_every_case([](const KernelSet& set, size_t n, Pattern pattern, uint32_t seed) {
    for (const DecodeCase& c : decode_cases()) {
      const auto rows = static_cast<size_t>(c.rows);
      GuardedBytes luma(pattern_bytes(pattern, n * rows, seed), Edge::kBack);
      const size_t pairs = (n + 1) & ~size_t{1};
      GuardedBytes chroma(pattern_bytes(pattern, pairs * ((rows + 1) / 2), seed + 1000), Edge::kBack);
      const auto length = static_cast<ptrdiff_t>(n);
      const YuvRows src = {luma.data(), length, chroma.data(), static_cast<ptrdiff_t>(pairs), c.rows};
      const size_t size = c.row_bytes(n) * rows * c.planes();
      Bytes expected(size);
      portable::kColorRows.decode[c.format][c.rounding](src, c.out(expected.data(), n, false), length);
      // With lengths of whole blocks the front of a page is aligned for stores around the caches.
      for (const bool around_caches : {false, true}) {
        GuardedBytes dst(Bytes(size, 7), around_caches ? Edge::kFront : Edge::kBack);
        set.color.decode[c.format][c.rounding](src, c.out(dst.data(), n, around_caches), length);
        guarded::expect_same(expected, dst.bytes(), c.row_bytes(n), name(c));
      }
    }
  });
}

/// Every luma with every chroma pair: four lumas a pass, two rows of two columns each.
TEST(ColorRows, DecodeOfEveryColor) {
  constexpr ptrdiff_t kWidth = 2 * 65536;
  Bytes chroma(kWidth), luma(2 * kWidth), expected(6 * kWidth), actual(6 * kWidth);
  for (size_t i = 0; i < 65536; ++i) {
    chroma[2 * i] = static_cast<uint8_t>(i >> 8);
    chroma[2 * i + 1] = static_cast<uint8_t>(i);
  }
  const YuvRows src = {luma.data(), kWidth, chroma.data(), 0, 2};
  for (size_t first = 0; first < 256; first += 4) {
    for (size_t i = 0; i < luma.size(); ++i) {
      luma[i] = static_cast<uint8_t>(first + (i & 1) + (i < kWidth ? 0 : 2));
    }
    for (const YuvRounding rounding : {kTruncate, kRound}) {
      const ColorRowsOut out = {{expected.data()}, 3 * kWidth, false};
      portable::kColorRows.decode[kVuToRgb][rounding](src, out, kWidth);
      for (const KernelSet* set : runnable_kernels()) {
        set->color.decode[kVuToRgb][rounding](src, {{actual.data()}, 3 * kWidth, false}, kWidth);
        ASSERT_EQ(0, std::memcmp(expected.data(), actual.data(), actual.size()))
            << set->name << ", luma from " << first << ", rounding " << rounding;
      }
    }
  }
}

TEST(ColorRows, EncodeReadsAndWritesItsPixelsOnly) {
  for_every_case([](const KernelSet& set, size_t n, Pattern pattern, uint32_t seed) {
    for (const auto encode : {&ColorRows::rgb_to_nv21, &ColorRows::bgr_to_nv21}) {
      GuardedBytes pixels(pattern_bytes(pattern, 3 * n, seed), Edge::kBack);
      const auto length = static_cast<ptrdiff_t>(n);
      Bytes luma(n), vu((n + 1) & ~size_t{1});
      (portable::kColorRows.*encode)(pixels.data(), luma.data(), vu.data(), length);
      for (const bool chroma : {true, false}) {
        GuardedBytes luma_dst(Bytes(n, 7), Edge::kBack), vu_dst(Bytes(vu.size(), 7), Edge::kBack);
        (set.color.*encode)(pixels.data(), luma_dst.data(), chroma ? vu_dst.data() : nullptr, length);
        guarded::expect_same(luma, luma_dst.bytes(), n, "luma");
        guarded::expect_same(chroma ? vu : Bytes(vu.size(), 7), vu_dst.bytes(), n, "chroma");
      }
    }
  });
}

TEST(ColorRows, GreyAndHsvReadAndWriteTheirPixelsOnly) {
  for_every_case([](const KernelSet& set, size_t n, Pattern pattern, uint32_t seed) {
    GuardedBytes pixels(pattern_bytes(pattern, 3 * n, seed), Edge::kBack);
    const auto length = static_cast<ptrdiff_t>(n);
    Bytes grey(n), hsv(12 * n);
    portable::kColorRows.bgr_to_grey(pixels.data(), grey.data(), length);
    portable::kColorRows.bgr_to_hsv(pixels.data(), reinterpret_cast<float*>(hsv.data()), length);
    GuardedBytes grey_dst(Bytes(n, 7), Edge::kBack), hsv_dst(Bytes(12 * n, 7), Edge::kBack);
    set.color.bgr_to_grey(pixels.data(), grey_dst.data(), length);
    set.color.bgr_to_hsv(pixels.data(), reinterpret_cast<float*>(hsv_dst.data()), length);
    guarded::expect_same(grey, grey_dst.bytes(), n, "grey");
    guarded::expect_same(hsv, hsv_dst.bytes(), 12, "hsv");
  });
}

/// All 2^24 colours, 65,536 at a time. Chroma is taken from even pixels only: a second run begins one later.
TEST(ColorRows, EncodeGreyAndHsvOfEveryColor) {
  constexpr ptrdiff_t kPixels = 65536;
  struct Results {
    Bytes luma = Bytes(kPixels), vu = Bytes(2 * kPixels), grey = Bytes(kPixels);
    std::vector<float> hsv = std::vector<float>(3 * kPixels);

    void convert(const ColorRows& rows, const uint8_t* pixels) {
      rows.bgr_to_nv21(pixels, luma.data(), vu.data(), kPixels);
      rows.bgr_to_nv21(pixels + 3, luma.data() + 1, vu.data() + kPixels, kPixels - 1);
      rows.bgr_to_grey(pixels, grey.data(), kPixels);
      rows.bgr_to_hsv(pixels, hsv.data(), kPixels);
    }
  } expected, actual;
  Bytes pixels(3 * kPixels);
  for (int red = 0; red < 256; ++red) {
    for (size_t i = 0; i < kPixels; ++i) {
      pixels[3 * i] = static_cast<uint8_t>(i);
      pixels[3 * i + 1] = static_cast<uint8_t>(i >> 8);
      pixels[3 * i + 2] = static_cast<uint8_t>(red);
    }
    expected.convert(portable::kColorRows, pixels.data());
    for (const KernelSet* set : runnable_kernels()) {
      actual.convert(set->color, pixels.data());
      ASSERT_EQ(expected.luma, actual.luma) << set->name << ", red " << red;
      ASSERT_EQ(expected.vu, actual.vu) << set->name << ", red " << red;
      ASSERT_EQ(expected.grey, actual.grey) << set->name << ", red " << red;
      ASSERT_EQ(0, std::memcmp(expected.hsv.data(), actual.hsv.data(), sizeof(float) * actual.hsv.size()))
          << set->name << ", red " << red;
    }
  }
}

}  // namespace
