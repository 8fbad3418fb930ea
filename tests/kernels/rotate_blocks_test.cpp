/// The rotation loops, every form against the portable one.
#include <gtest/gtest.h>

#include <vector>

#include "kernels/kernel_cases.h"

namespace {

using namespace morvale;
using guarded::Bytes;
using guarded::CanaryBytes;
using guarded::Edge;
using guarded::GuardedBytes;
using guarded::random_bytes;

using Transpose = void (*)(const uint8_t*, ptrdiff_t, uint8_t*, ptrdiff_t, int, int);

/// A transposition between tight planes; a side that is upended is walked from its last row up.
void run(Transpose transpose, const uint8_t* src, uint8_t* dst, int sample, int columns, int rows,
         bool src_upended, bool dst_upended) {
  const ptrdiff_t from = ptrdiff_t{columns} * sample, to = ptrdiff_t{rows} * sample;
  transpose(src_upended ? src + (rows - 1) * from : src, src_upended ? -from : from,
            dst_upended ? dst + (columns - 1) * to : dst, dst_upended ? -to : to, columns, rows);
}

/// Sizes below, at and above every tile, strip and half tile, with remainders in both directions.
TEST(RotateBlocks, TransposeAnySizeInsideThePlanes) {
  uint32_t seed = 1;
  for (const KernelSet* set : runnable_kernels()) {
    for (const int columns : {1, 7, 8, 9, 15, 16, 17, 31, 33, 64, 70, 130}) {
      for (const int rows : {1, 7, 8, 15, 16, 17, 31, 32, 33, 48, 65}) {
        for (const int sample : {1, 2}) {
          SCOPED_TRACE(std::string(set->name) + " " + guarded::size_text(columns, rows) + ", sample " +
                       std::to_string(sample) + ", seed " + std::to_string(++seed));
          const RotateBlocks &ours = set->rotate, &plain = portable::kRotateBlocks;
          const bool src_upended = seed / 4 % 2 == 0, dst_upended = seed / 8 % 2 == 0;
          const auto size = static_cast<size_t>(columns * rows * sample);
          GuardedBytes src(random_bytes(size, seed), guarded::kEdges[seed / 2 % 2]);
          Bytes expected(size);
          CanaryBytes dst(size);
          run(sample == 1 ? plain.transpose_bytes : plain.transpose_pairs, src.data(), expected.data(),
              sample, columns, rows, src_upended, dst_upended);
          run(sample == 1 ? ours.transpose_bytes : ours.transpose_pairs, src.data(), dst.data(), sample,
              columns, rows, src_upended, dst_upended);
          guarded::expect_same(expected, dst.bytes(), static_cast<size_t>(rows * sample), "transpose");
        }
      }
    }
  }
}

TEST(RotateBlocks, Reverse) {
  kernel_cases::for_every_case([](const KernelSet& set, size_t n, guarded::Pattern pattern, uint32_t seed) {
    const RotateBlocks &ours = set.rotate, &plain = portable::kRotateBlocks;
    for (const size_t sample : {1U, 2U}) {
      const auto samples = static_cast<ptrdiff_t>(n);
      GuardedBytes src(guarded::pattern_bytes(pattern, n * sample, seed), guarded::kEdges[seed % 2]);
      Bytes expected(n * sample);
      CanaryBytes dst(n * sample);
      (sample == 1 ? plain.reverse_bytes : plain.reverse_pairs)(src.data(), expected.data(), samples);
      (sample == 1 ? ours.reverse_bytes : ours.reverse_pairs)(src.data(), dst.data(), samples);
      guarded::expect_same(expected, dst.bytes(), n * sample, "reverse");
    }
  });
}

}  // namespace
