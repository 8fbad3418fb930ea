/// The cases on which every vector form of a row loop is compared with the portable one.
#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "fakes/guarded_bytes.h"
#include "kernels/kernel_set.h"

namespace kernel_cases {

using guarded::Pattern;
using morvale::KernelSet;

/// Lengths around every block width in use, odd and even.
inline const std::vector<int> kLengths = {1,  2,  3,  5,  7,  8,  9,  15, 16,  17,  23,  31,  32,  33,  47,
                                          48, 49, 63, 64, 65, 95, 96, 97, 127, 128, 129, 255, 256, 257, 640};

/// The sets to compare with the portable one.
inline std::vector<const KernelSet*> vector_sets() {
  const auto sets = morvale::runnable_kernels();
  return {sets.begin() + 1, sets.end()};  // slowest first: the portable one leads
}

/// Runs `check(set, length, pattern, seed)` for every vector set, length and pattern.
template <class Check>
void for_every_case(Check check) {
  if (vector_sets().empty())
    GTEST_SKIP() << "only the portable kernels run here: nothing to compare them with";
  for (const KernelSet* set : vector_sets()) {
    uint32_t seed = 1;
    for (const int length : kLengths) {
      for (const Pattern pattern : guarded::kPatterns) {
        SCOPED_TRACE(std::string(set->name) + ", length " + std::to_string(length) + ", pattern " +
                     std::to_string(static_cast<int>(pattern)) + ", seed " + std::to_string(seed));
        check(*set, static_cast<size_t>(length), pattern, seed++);
      }
    }
  }
}

}  // namespace kernel_cases
