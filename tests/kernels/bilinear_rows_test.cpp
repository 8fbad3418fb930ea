/// The bilinear loops, every form against the portable one. Rows end (or begin) at a page without access,
/// so that a loop reads no byte beside those that the portable one reads or that lie between them.
#include <gtest/gtest.h>

#include <random>
#include <vector>

#include "kernels/kernel_cases.h"

namespace {

using namespace morvale;
using guarded::Bytes;
using guarded::CanaryBytes;
using guarded::GuardedBytes;
using guarded::Pattern;
using guarded::pattern_bytes;

constexpr int kFar = 1 << 30;

struct Case {
  int channels, width, position, step, fy;
  /// How many columns before the last one wanted the rows end: those past it read as the last that is there.
  int missing;
};

std::string describe(const KernelSet& set, const Case& c, uint32_t seed) {
  return std::string(set.name) + ": channels " + std::to_string(c.channels) + ", width " +
         std::to_string(c.width) + ", position " + std::to_string(c.position) + ", step " +
         std::to_string(c.step) + ", fy " + std::to_string(c.fy) + ", missing " + std::to_string(c.missing) +
         ", seed " + std::to_string(seed);
}

void expect_bilinear(const KernelSet& set, const Case& c, uint32_t seed) {
  SCOPED_TRACE(describe(set, c, seed));
  const int columns = (c.width + c.channels - 1) / c.channels, end = c.position + (columns - 1) * c.step;
  const int first = c.position >> 8, last = std::max(((end + 255) >> 8) - c.missing, first);
  const auto bytes = static_cast<size_t>((last - first + 1) * c.channels);
  const auto edge = guarded::kEdges[seed % 2];
  GuardedBytes top(pattern_bytes(guarded::kPatterns[seed % 4], bytes, seed), edge);
  GuardedBytes below(pattern_bytes(guarded::kPatterns[seed / 4 % 4], bytes, seed + 1), edge);
  const int row_last = c.missing > 0 ? last : kFar;
  const SourceRow upper{top.data() - first * c.channels, row_last};
  const SourceRow lower = c.fy == 0 ? upper : SourceRow{below.data() - first * c.channels, row_last};
  // What lies ahead may be asked for, but not read: here it lies outside every buffer.
  const BilinearSource rows{upper, lower, c.fy, c.step, seed % 3 == 0 ? ptrdiff_t{1} << 20 : 0};
  const auto run = [&](const BilinearRows& loops, uint8_t* dst) {
    (c.channels == 1 ? loops.bytes : loops.pairs)(rows, c.position, dst, c.width);
  };
  Bytes expected(static_cast<size_t>(c.width));
  CanaryBytes dst(expected.size());
  run(portable::kBilinearRows, expected.data());
  run(set.bilinear, dst.data());
  guarded::expect_same(expected, dst.bytes(), expected.size(), "bilinear");
}

TEST(BilinearRows, OfEveryStepAndWidth) {
  std::mt19937 random(7);
  const auto draw = [&](unsigned n) { return static_cast<int>((random() >> 8) % n); };
  uint32_t seed = 0;
  for (const KernelSet* set : runnable_kernels()) {
    // Standing still, enlarging, a copy, the small grid's step, exact steps, a camera's shrink, far apart.
    for (const int step : {0, 1, 100, 255, 256, 341, 431, 512, 1000, 3840, 4000, 4096, 20000}) {
      for (const int width : {1, 2, 7, 8, 9, 15, 16, 17, 18, 19, 31, 32, 33, 47, 64, 127, 144, 257}) {
        for (const int channels : {1, 2}) {
          const int start = draw(3) == 0 ? draw(3000) : 256 * draw(3), missing = draw(4) == 0 ? draw(9) : 0;
          expect_bilinear(*set, {channels, width, start, step, 0, 0}, ++seed);
          expect_bilinear(*set, {channels, width, start, step, 1 + draw(255), 0}, ++seed);
          expect_bilinear(*set, {channels, width, start, step, draw(256), missing}, ++seed);
        }
      }
    }
  }
}

/// Every pair of neighbours at every fraction, below extremes: the sums that come nearest to leaving 16 bits.
TEST(BilinearRows, OfEveryPairAndFraction) {
  for (const KernelSet* set : runnable_kernels()) {
    for (int a = 0; a < 256; ++a) {
      Bytes top, below;
      for (int b = 0; b < 256; ++b) top.insert(top.end(), {static_cast<uint8_t>(a), static_cast<uint8_t>(b)});
      for (int b = 0; b < 256; ++b) below.insert(below.end(), {uint8_t{255}, static_cast<uint8_t>(255 - b)});
      top.push_back(0);
      below.push_back(255);
      for (const int fx : {0, 1, 127, 128, 255}) {
        const int fy = (a * 37 + fx) & 255;
        const SourceRow upper{top.data(), kFar}, lower{below.data(), kFar};
        const BilinearSource rows{upper, fy == 0 ? upper : lower, fy, 512, 0};
        Bytes expected(256), actual(256);
        portable::kBilinearRows.bytes(rows, fx, expected.data(), 256);
        set->bilinear.bytes(rows, fx, actual.data(), 256);
        ASSERT_EQ(expected, actual) << set->name << ", left " << a << ", fx " << fx << ", fy " << fy;
      }
    }
  }
}

}  // namespace
