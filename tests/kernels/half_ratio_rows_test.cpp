/// The half-ratio loops, every form against the portable one. Rows end (or begin) at a page without access,
/// so that a loop reads no byte beside those that the portable one reads or that lie between them.
#include <gtest/gtest.h>

#include <algorithm>
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

/// Ratios on both sides of every change of road: none, 1.5, runs that just fit a window of 16 bytes or of 8
/// pairs or just do not, and a large one.
constexpr int kWholeColumns[] = {0, 1, 2, 3, 6, 7, 14, 15, 31};

struct Case {
  int channels, ix, width;
  int base;  ///< the first source column
  /// How many columns before the last one wanted the rows end: those past it read as the last that is there.
  int missing;

  int columns() const { return (width + channels - 1) / channels; }
  /// From the first source column to the last even column's sample or the last odd column's second one.
  int reach() const {
    const int run = 2 * ix + 1;
    return std::max((columns() - 1) / 2 * run, columns() < 2 ? 0 : columns() / 2 * run - ix);
  }
};

void expect_same_as_portable(const KernelSet& set, const Case& c, Pattern pattern, uint32_t seed) {
  SCOPED_TRACE("channels " + std::to_string(c.channels) + ", ix " + std::to_string(c.ix) + ", missing " +
               std::to_string(c.missing));
  const int there = std::max(c.reach() + 1 - c.missing, 1);
  const auto bytes = static_cast<size_t>(there * c.channels), width = static_cast<size_t>(c.width);
  const auto edge = guarded::kEdges[seed / 2 % 2];
  GuardedBytes first(pattern_bytes(pattern, bytes, seed), edge);
  GuardedBytes upper(pattern_bytes(pattern, bytes, seed + 1), edge);
  GuardedBytes lower(pattern_bytes(Pattern::kRandom, bytes, seed + 2), edge);
  const auto row = [&](GuardedBytes& b) {
    return SourceRow{b.data() - c.base * c.channels, c.missing > 0 ? c.base + there - 1 : kFar};
  };
  const HalfRatioSource source{row(first), row(upper), row(lower), c.ix};
  const auto run = [&](const HalfRatioRows& loops, uint8_t* above, uint8_t* under) {
    (c.channels == 1 ? loops.bytes : loops.pairs)(source, c.base, above, under, c.width);
  };
  Bytes above(width), under(width);
  CanaryBytes set_above(width), set_under(width);
  run(portable::kHalfRatioRows, above.data(), under.data());
  run(set.half_ratio, set_above.data(), set_under.data());
  guarded::expect_same(above, set_above.bytes(), width, "above");
  guarded::expect_same(under, set_under.bytes(), width, "under");
}

TEST(HalfRatioRows, EveryRatioAndWidth) {
  kernel_cases::for_every_case([](const KernelSet& set, size_t width, Pattern pattern, uint32_t seed) {
    for (const int channels : {1, 2})
      for (const int ix : kWholeColumns) {
        const int missing = seed % 3 == 0 ? static_cast<int>(seed % 7) : 0;
        expect_same_as_portable(set, {channels, ix, static_cast<int>(width), seed % 2 == 0 ? 0 : 5, missing},
                                pattern, seed);
      }
  });
}

/// The rule averages where the bilinear one blends with weights of a half: the same bytes.
TEST(HalfRatioRows, AreTheBilinearRuleAtItsPositions) {
  constexpr int kWidth = 64;
  for (const int ix : kWholeColumns)
    for (const Pattern pattern : guarded::kPatterns) {
      const Bytes plane = pattern_bytes(pattern, 3 * 4096, static_cast<uint32_t>(ix));
      const SourceRow rows[] = {
          {plane.data(), kFar}, {plane.data() + 4096, kFar}, {plane.data() + 8192, kFar}};
      Bytes above(kWidth), under(kWidth), expected(kWidth);
      const int step = 256 * ix + 128;
      portable::kHalfRatioRows.bytes({rows[0], rows[1], rows[2], ix}, 0, above.data(), under.data(), kWidth);
      portable::kBilinearRows.bytes({rows[0], rows[0], 0, step, 0}, 0, expected.data(), kWidth);
      EXPECT_EQ(expected, above) << "ix " << ix;
      portable::kBilinearRows.bytes({rows[1], rows[2], 128, step, 0}, 0, expected.data(), kWidth);
      EXPECT_EQ(expected, under) << "ix " << ix;
    }
}

/// The mean of four from bytes must agree with the sum in all carries: every parity and size of sums.
TEST(HalfRatioRows, MeanOfFour) {
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
        const HalfRatioSource source{{upper.data(), kFar}, {upper.data(), kFar}, {lower.data(), kFar}, 1};
        Bytes expected(1024), actual(1024);
        portable::kHalfRatioRows.bytes(source, 0, expected.data(), expected.data() + 512, 512);
        set->half_ratio.bytes(source, 0, actual.data(), actual.data() + 512, 512);
        ASSERT_EQ(expected, actual) << set->name << ", " << int{a} << ", " << int{b};
      }
  }
}

}  // namespace
