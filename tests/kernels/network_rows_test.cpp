/// The loops around the network, every form against the portable one.
#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <vector>

#include "kernels/kernel_cases.h"

namespace {

using namespace morvale;
using guarded::Edge;
using guarded::GuardedBytes;
using guarded::Pattern;
using guarded::pattern_bytes;
using kernel_cases::for_every_case;

/// Bit patterns, so that a comparison tells -0 from 0.
std::vector<uint32_t> bits_of(const std::vector<float>& floats) {
  std::vector<uint32_t> bits;
  for (const float f : floats) bits.push_back(std::bit_cast<uint32_t>(f));
  return bits;
}

TEST(NetworkRows, ToInput) {
  for_every_case([](const KernelSet& set, size_t n, Pattern pattern, uint32_t seed) {
    GuardedBytes src(pattern_bytes(pattern, n, seed), Edge::kBack);
    std::vector<float> expected(n + 1, 9.0f), actual(n + 1, 9.0f);
    portable::kNetworkRows.to_input(src.data(), expected.data(), static_cast<ptrdiff_t>(n));
    set.network.to_input(src.data(), actual.data(), static_cast<ptrdiff_t>(n));
    ASSERT_EQ(bits_of(expected), bits_of(actual));
  });
}

TEST(NetworkRows, ToInputOfEveryByte) {
  std::vector<uint8_t> bytes(256);
  for (size_t i = 0; i < 256; ++i) bytes[i] = static_cast<uint8_t>(i);
  for (const KernelSet* set : runnable_kernels()) {
    std::vector<float> expected(256), actual(256);
    for (size_t i = 0; i < 256; ++i)
      expected[i] = static_cast<float>(static_cast<double>(i) / 255.0 * 2.0 - 1.0);
    set->network.to_input(bytes.data(), actual.data(), 256);
    EXPECT_EQ(bits_of(expected), bits_of(actual)) << set->name;
  }
}

/// Scores on both sides of every threshold, and what no score should be.
std::vector<float> telling_scores() {
  constexpr float kInfinity = std::numeric_limits<float>::infinity();
  std::vector<float> scores = {0.0f,     -0.0f,     kInfinity, -kInfinity, std::nanf(""), -std::nanf(""),
                               3e38f,    -3e38f,    1.7e8f,    1.8e8f,     -1.8e8f,       1e-40f,
                               2.147e9f, -2.148e9f, 10.0f,     -10.0f,     99.0f};
  for (int k = 0; k <= 256; ++k) {
    float score = static_cast<float>(k) * 20.0f / 255.0f - 10.0f;
    for (int step = 0; step < 40; ++step) score = std::nextafter(score, -kInfinity);
    for (int step = 0; step < 80; ++step) scores.push_back(score = std::nextafter(score, kInfinity));
    for (int step = 0; step < 4000; ++step) scores.push_back(score + static_cast<float>(step - 2000) * 1e-7f);
  }
  return scores;
}

TEST(NetworkRows, ToBytes) {
  const std::vector<float> scores = telling_scores();
  for_every_case([&](const KernelSet& set, size_t n, Pattern, uint32_t seed) {
    const float* from = scores.data() + (seed * 7919u) % (scores.size() - n);
    std::vector<uint8_t> expected(n);
    portable::kNetworkRows.to_bytes(from, expected.data(), static_cast<ptrdiff_t>(n));
    GuardedBytes dst(std::vector<uint8_t>(n, 7), Edge::kBack);
    set.network.to_bytes(from, dst.data(), static_cast<ptrdiff_t>(n));
    guarded::expect_same(expected, dst.bytes(), n, "to_bytes");
  });
  const auto count = static_cast<ptrdiff_t>(scores.size());
  std::vector<uint8_t> expected(scores.size()), actual(scores.size());
  portable::kNetworkRows.to_bytes(scores.data(), expected.data(), count);
  for (const KernelSet* set : runnable_kernels()) {
    set->network.to_bytes(scores.data(), actual.data(), count);
    for (size_t i = 0; i < scores.size(); ++i) {
      ASSERT_EQ(int{expected[i]}, int{actual[i]}) << set->name << ", score " << scores[i];
    }
  }
}

TEST(NetworkRows, Smooth) {
  for_every_case([](const KernelSet& set, size_t n, Pattern pattern, uint32_t seed) {
    const auto cells = static_cast<ptrdiff_t>(n);
    const std::vector<uint8_t> first = pattern_bytes(pattern, 5 * n, seed);
    // Small changes too: there the weights are large.
    std::vector<uint8_t> second = pattern_bytes(Pattern::kRandom, 5 * n, seed + 1000);
    if (seed % 2 == 0) {
      for (size_t i = 0; i < 5 * n; ++i) second[i] = static_cast<uint8_t>(first[i] ^ (second[i] & 15));
    }
    for (const auto smooth : {&NetworkRows::smooth_front, &NetworkRows::smooth_back}) {
      std::vector<uint8_t> expected = first;
      GuardedBytes before(second, Edge::kBack);
      (portable::kNetworkRows.*smooth)(expected.data(), before.data(), cells);
      GuardedBytes now(first, Edge::kBack);
      (set.network.*smooth)(now.data(), before.data(), cells);
      guarded::expect_same(expected, now.bytes(), 5, "smooth");
    }
  });
}

/// Every sum of differences, 0 to 1275: every weight, and the wrap of the front camera's change.
TEST(NetworkRows, SmoothOfEveryDifference) {
  std::vector<uint8_t> now, before;
  for (int sum = 0; sum <= 1275; ++sum) {
    for (int k = 0; k < 5; ++k) {
      const int difference = std::min(std::max(sum - 255 * k, 0), 255);
      now.push_back(static_cast<uint8_t>(k % 2 == 0 ? difference : 255 - difference));
      before.push_back(static_cast<uint8_t>(k % 2 == 0 ? 0 : 255));
    }
  }
  for (const KernelSet* set : runnable_kernels()) {
    for (const auto smooth : {&NetworkRows::smooth_front, &NetworkRows::smooth_back}) {
      std::vector<uint8_t> expected = now, actual = now;
      (portable::kNetworkRows.*smooth)(expected.data(), before.data(), 1276);
      (set->network.*smooth)(actual.data(), before.data(), 1276);
      EXPECT_EQ(expected, actual) << set->name;
    }
  }
}

TEST(NetworkRows, Split) {
  for_every_case([](const KernelSet& set, size_t n, Pattern pattern, uint32_t seed) {
    GuardedBytes map(pattern_bytes(pattern, 5 * n, seed), Edge::kBack);
    std::vector<uint8_t> expected(5 * n), actual(5 * n + 1, 7);
    uint8_t* to_expected[5];
    uint8_t* to_actual[5];
    for (size_t k = 0; k < 5; ++k) to_expected[k] = &expected[k * n], to_actual[k] = &actual[k * n];
    portable::kNetworkRows.split(map.data(), to_expected, static_cast<ptrdiff_t>(n));
    set.network.split(map.data(), to_actual, static_cast<ptrdiff_t>(n));
    EXPECT_EQ(actual.back(), 7);
    guarded::expect_same(expected, std::span(actual).first(5 * n), n, "split");
  });
}

}  // namespace
