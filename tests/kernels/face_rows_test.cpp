/// The loops of the scene analyses, every form against the portable one.
#include "kernels/face_rows.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <vector>

#include "kernels/kernel_cases.h"

namespace {

using namespace morvale;
using guarded::Edge;
using guarded::GuardedBytes;
using guarded::Pattern;
using guarded::pattern_bytes;
using kernel_cases::for_every_case;

/// Five planes of scores. Few values far apart make ties and wins of every label; others are near the limits.
std::vector<uint8_t> score_planes(Pattern pattern, size_t n, uint32_t seed) {
  if (pattern != Pattern::kRandom) return pattern_bytes(pattern, 5 * n, seed);
  constexpr uint8_t kScores[] = {0, 50, 51, 199, 200, 201, 254, 255};
  std::mt19937 random(seed);
  std::vector<uint8_t> scores(5 * n);
  for (uint8_t& s : scores) s = kScores[random() % 8];
  return scores;
}

using Classify = int64_t (*FaceRows::*)(const uint8_t* const*, uint8_t*, uint64_t*, ptrdiff_t, ptrdiff_t);

struct Classified {
  std::vector<uint8_t> mask;
  std::vector<uint64_t> bits;
  int64_t counted;
  bool operator==(const Classified&) const = default;
};

/// Words three apart, so that a wrong stride shows. All five rows end where no byte may be read.
Classified classify(const FaceRows& rows, Classify form, const std::vector<uint8_t>& scores) {
  const size_t n = scores.size() / 5;
  std::vector<std::unique_ptr<GuardedBytes>> buffers;
  const uint8_t* planes[5];
  for (size_t k = 0; k < 5; ++k) {
    const auto plane = std::vector<uint8_t>(scores.begin() + static_cast<ptrdiff_t>(k * n),
                                            scores.begin() + static_cast<ptrdiff_t>((k + 1) * n));
    buffers.push_back(std::make_unique<GuardedBytes>(plane, Edge::kBack));
    planes[k] = buffers.back()->data();
  }
  GuardedBytes mask(std::vector<uint8_t>(n, 7), Edge::kBack);
  std::vector<uint64_t> bits((n + 63) / 64 * 3, 0x7777);
  const int64_t counted = (rows.*form)(planes, mask.data(), bits.data(), 3, static_cast<ptrdiff_t>(n));
  return {{mask.bytes().begin(), mask.bytes().end()}, bits, counted};
}

TEST(FaceRows, Classify) {
  for_every_case([](const KernelSet& set, size_t n, Pattern pattern, uint32_t seed) {
    const std::vector<uint8_t> scores = score_planes(pattern, n, seed);
    for (const Classify form : {&FaceRows::classify_faces, &FaceRows::classify_persons}) {
      ASSERT_EQ(classify(portable::kFaceRows, form, scores), classify(set.face, form, scores));
    }
  });
}

TEST(FaceRows, WidenWords) {
  for_every_case([](const KernelSet& set, size_t n, Pattern, uint32_t seed) {
    std::mt19937_64 random(seed);
    std::vector<uint64_t> columns[3];
    for (auto& column : columns) {
      for (size_t y = 0; y < n; ++y)
        column.push_back(uint64_t{1} << random() % 64 & random() % 2 * ~uint64_t{0});
    }
    std::vector<uint64_t> expected(n), actual(n + 1, 7);
    const auto rows = static_cast<ptrdiff_t>(n);
    portable::kFaceRows.widen_words(columns[0].data(), columns[1].data(), columns[2].data(), expected.data(),
                                    rows);
    set.face.widen_words(columns[0].data(), columns[1].data(), columns[2].data(), actual.data(), rows);
    expected.push_back(7);
    ASSERT_EQ(expected, actual);
  });
}

/// The counts over all sets; how pixels are shared out between the sets is each form's own affair.
struct Totals {
  int64_t luma_sum, luma_pixels, above_200, above_230, colour_pixels;
  std::vector<uint32_t> bins;
  bool operator==(const Totals&) const = default;
};

Totals totals(const FaceCounts& c) {
  Totals t{c.luma_sum,  c.luma_pixels,   c.above_200,
           c.above_230, c.colour_pixels, std::vector<uint32_t>(FaceCounts::kBins)};
  for (const auto& set : c.bins) {
    for (size_t k = 0; k < t.bins.size(); ++k) t.bins[k] += set[k];
  }
  return t;
}

TEST(FaceRows, CountFace) {
  for_every_case([](const KernelSet& set, size_t n, Pattern pattern, uint32_t seed) {
    std::vector<uint8_t> scores = score_planes(pattern, n, seed);
    scores.resize(n);
    std::vector<uint8_t> face = pattern_bytes(Pattern::kRandom, n, seed + 1);
    for (uint8_t& m : face) m = m < 60 ? 0 : m;  // any nonzero mask counts
    GuardedBytes score2(scores, Edge::kBack), mask(face, Edge::kBack);
    GuardedBytes luma(pattern_bytes(Pattern::kRandom, n, seed + 2), Edge::kBack);
    GuardedBytes rgb(pattern_bytes(pattern, 3 * n, seed + 3), Edge::kBack);
    FaceCounts expected, actual;
    for (int rows = 0; rows < 2; ++rows) {  // the second row adds to the first
      portable::kFaceRows.count_face(score2.data(), mask.data(), luma.data(), rgb.data(),
                                     static_cast<ptrdiff_t>(n), expected);
      set.face.count_face(score2.data(), mask.data(), luma.data(), rgb.data(), static_cast<ptrdiff_t>(n),
                          actual);
    }
    ASSERT_EQ(totals(expected), totals(actual));
  });
}

/// All 2^24 colours, 256 of them a row.
TEST(FaceRows, CountFaceOfEveryColour) {
  const std::vector<uint8_t> all(256, 255);
  std::vector<uint8_t> rgb(3 * 256);
  if (kernel_cases::vector_sets().empty()) GTEST_SKIP() << "only the portable kernels run here";
  for (const KernelSet* set : kernel_cases::vector_sets()) {
    for (int colour = 0; colour < 1 << 24; colour += 256) {
      for (size_t b = 0; b < 256; ++b) {
        rgb[3 * b] = static_cast<uint8_t>(colour >> 16);
        rgb[3 * b + 1] = static_cast<uint8_t>(colour >> 8);
        rgb[3 * b + 2] = static_cast<uint8_t>(b);
      }
      FaceCounts expected, actual;
      portable::kFaceRows.count_face(all.data(), all.data(), all.data(), rgb.data(), 256, expected);
      set->face.count_face(all.data(), all.data(), all.data(), rgb.data(), 256, actual);
      ASSERT_EQ(0, std::memcmp(expected.bins, actual.bins, sizeof expected.bins))
          << set->name << ", red " << (colour >> 16) << ", green " << (colour >> 8 & 255);
    }
  }
}

}  // namespace
