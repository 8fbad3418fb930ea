/// The plane enlargers' loops, every form against the portable one.
#include <gtest/gtest.h>

#include <vector>

#include "kernels/kernel_cases.h"

namespace {

using namespace morvale;
using guarded::Edge;
using guarded::GuardedBytes;
using guarded::Pattern;
using guarded::pattern_bytes;
using kernel_cases::for_every_case;

TEST(PlaneRows, QuadrupleRow) {
  for_every_case([](const KernelSet& set, size_t n, Pattern pattern, uint32_t seed) {
    GuardedBytes src(pattern_bytes(pattern, n, seed), Edge::kBack);
    std::vector<uint8_t> expected(4 * n);
    portable::kPlaneRows.quadruple_row(src.data(), expected.data(), static_cast<int>(n));
    GuardedBytes dst(std::vector<uint8_t>(4 * n, 7), Edge::kBack);
    set.plane.quadruple_row(src.data(), dst.data(), static_cast<int>(n));
    guarded::expect_same(expected, dst.bytes(), 4, "quadruple_row");
  });
}

TEST(PlaneRows, QuarterRows) {
  for_every_case([](const KernelSet& set, size_t n, Pattern pattern, uint32_t seed) {
    GuardedBytes above(pattern_bytes(pattern, n, seed), Edge::kBack);
    GuardedBytes below(pattern_bytes(pattern, n, seed + 1000), Edge::kBack);
    std::vector<uint8_t> expected(3 * n);
    const auto stride = static_cast<ptrdiff_t>(n);
    portable::kPlaneRows.quarter_rows(above.data(), below.data(), expected.data(), stride, stride);
    GuardedBytes dst(std::vector<uint8_t>(3 * n, 7), Edge::kBack);
    set.plane.quarter_rows(above.data(), below.data(), dst.data(), stride, stride);
    guarded::expect_same(expected, dst.bytes(), n, "quarter_rows");
  });
}

/// All 65,536 pairs of neighbours.
TEST(PlaneRows, QuadrupleRowOfEveryPair) {
  for (const KernelSet* set : runnable_kernels()) {
    for (int a = 0; a < 256; ++a) {
      std::vector<uint8_t> src, expected(4 * 513), actual(4 * 513);
      for (int b = 0; b < 256; ++b) src.insert(src.end(), {static_cast<uint8_t>(a), static_cast<uint8_t>(b)});
      src.push_back(static_cast<uint8_t>(a));
      portable::kPlaneRows.quadruple_row(src.data(), expected.data(), 513);
      set->plane.quadruple_row(src.data(), actual.data(), 513);
      ASSERT_EQ(expected, actual) << set->name << ", first " << a;
    }
  }
}

}  // namespace
