/// The resampling loops, every form against the portable one. Rows end (or begin) at a page without access,
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
  const BilinearRows rows{upper, lower, c.fy, c.step, seed % 3 == 0 ? ptrdiff_t{1} << 20 : 0};
  const auto run = [&](const ResampleRows& loops, uint8_t* dst) {
    (c.channels == 1 ? loops.bilinear_bytes : loops.bilinear_pairs)(rows, c.position, dst, c.width);
  };
  Bytes expected(static_cast<size_t>(c.width));
  CanaryBytes dst(expected.size());
  run(portable::kResampleRows, expected.data());
  run(set.resample, dst.data());
  guarded::expect_same(expected, dst.bytes(), expected.size(), "bilinear");
}

TEST(ResampleRows, BilinearOfEveryStepAndWidth) {
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
TEST(ResampleRows, BilinearOfEveryPairAndFraction) {
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
        const BilinearRows rows{upper, fy == 0 ? upper : lower, fy, 512, 0};
        Bytes expected(256), actual(256);
        portable::kResampleRows.bilinear_bytes(rows, fx, expected.data(), 256);
        set->resample.bilinear_bytes(rows, fx, actual.data(), 256);
        ASSERT_EQ(expected, actual) << set->name << ", left " << a << ", fx " << fx << ", fy " << fy;
      }
    }
  }
}

TEST(ResampleRows, HalfRatio) {
  kernel_cases::for_every_case([](const KernelSet& set, size_t width, Pattern pattern, uint32_t seed) {
    for (const int channels : {1, 2})
      for (const int ix : {0, 1, 2}) {
        SCOPED_TRACE("channels " + std::to_string(channels) + ", ix " + std::to_string(ix));
        const int columns = (static_cast<int>(width) + channels - 1) / channels, base = seed % 2 == 0 ? 0 : 5;
        // The last even column's sample, or the second neighbour of the last odd column.
        const int step = 2 * ix + 1,
                  wanted = std::max((columns - 1) / 2 * step + 1, columns / 2 * step - ix + 1);
        const int missing = seed % 3 == 0 ? static_cast<int>(seed % 7) : 0;
        const int there = std::max(wanted - missing, 1);
        const auto bytes = static_cast<size_t>(there * channels);
        const auto edge = guarded::kEdges[seed / 2 % 2];
        GuardedBytes first(pattern_bytes(pattern, bytes, seed), edge);
        GuardedBytes upper(pattern_bytes(pattern, bytes, seed + 1), edge);
        GuardedBytes lower(pattern_bytes(Pattern::kRandom, bytes, seed + 2), edge);
        const auto row = [&](GuardedBytes& b) {
          return SourceRow{b.data() - base * channels, missing > 0 ? base + there - 1 : kFar};
        };
        const HalfRatioRows rows{row(first), row(upper), row(lower), ix};
        Bytes expected(2 * width);
        CanaryBytes above(width), under(width);
        const auto run = [&](const ResampleRows& loops, uint8_t* one, uint8_t* two) {
          (channels == 1 ? loops.half_ratio_bytes : loops.half_ratio_pairs)(rows, base, one, two,
                                                                            static_cast<int>(width));
        };
        run(portable::kResampleRows, expected.data(), expected.data() + width);
        run(set.resample, above.data(), under.data());
        const auto half = expected.begin() + static_cast<ptrdiff_t>(width);
        guarded::expect_same({expected.begin(), half}, above.bytes(), width, "above");
        guarded::expect_same({half, expected.end()}, under.bytes(), width, "under");
      }
  });
}

/// The mean of four from bytes must agree with the sum in all carries: every parity and size of sums.
TEST(ResampleRows, HalfRatioMeanOfFour) {
  const Bytes kSteps = {0, 1, 2, 3, 4, 5, 63, 126, 127, 128, 129, 250, 252, 253, 254, 255};
  for (const KernelSet* set : runnable_kernels()) {
    for (const uint8_t a : kSteps)
      for (const uint8_t b : kSteps) {
        Bytes upper, lower;
        for (const uint8_t c : kSteps)
          for (const uint8_t d : kSteps) {
            upper.insert(upper.end(), {c, a, b});
            lower.insert(lower.end(), {d, c, d});
          }
        const HalfRatioRows rows{{upper.data(), kFar}, {upper.data(), kFar}, {lower.data(), kFar}, 1};
        Bytes expected(1024), actual(1024);
        portable::kResampleRows.half_ratio_bytes(rows, 0, expected.data(), expected.data() + 512, 512);
        set->resample.half_ratio_bytes(rows, 0, actual.data(), actual.data() + 512, 512);
        ASSERT_EQ(expected, actual) << set->name << ", " << int{a} << ", " << int{b};
      }
  }
}

}  // namespace
