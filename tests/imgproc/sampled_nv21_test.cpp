/// The samples that shrinking reads, held to the shrinking itself.
#include "imgproc/sampled_nv21.h"

#include <gtest/gtest.h>
#include <morvale/imgproc/resize_nv21.h>

#include <algorithm>
#include <cstddef>
#include <random>
#include <vector>

namespace {

using Bytes = std::vector<uint8_t>;

struct Case {
  int width, height, shrunk_width, shrunk_height;
  const char* why;
};

constexpr Case kCases[] = {
    {4000, 3000, 256, 192, "12 megapixels, front"},
    {4000, 3000, 128, 96, "12 megapixels, back"},
    {1920, 1080, 256, 144, "step 7.5 in both directions: averages"},
    {640, 480, 256, 192, "2.5: averages"},
    {480, 640, 192, 256, "portrait"},
    {641, 479, 256, 191, "odd sides, odd rows, chroma rows that end inside a pair"},
    {384, 383, 256, 255, "an odd count of averaged rows: one more is written"},
    {383, 384, 255, 256, "the last pair has one byte"},
    {1280, 960, 128, 96, "whole steps: one sample each"},
    {60, 40, 256, 171, "enlarged: every sample"},
    {128, 96, 256, 192, "doubled: the averaging rule with no whole column"},
    {7, 5, 256, 183, "chroma of two rows"},
    {1, 1, 256, 256, "one pixel"},
};

/// Two planes with room for the samples that lie past them, and which of their bytes are read.
struct Planes {
  explicit Planes(const Case& c) : size(c) {
    const auto sampled = morvale::sampled_nv21(c.width, c.height, c.shrunk_width, c.shrunk_height);
    mark(sampled.luma, 1, luma, luma_read);
    mark(sampled.chroma, 2, chroma, chroma_read);
  }

  void mark(const morvale::SampledPlane& samples, int channels, Bytes& plane, std::vector<size_t>& read) {
    const auto width = static_cast<size_t>(size.width);
    plane.assign(width * static_cast<size_t>(size.height + 2) + 4, 255);
    for (const int32_t row : samples.rows) {
      for (const int32_t column : samples.columns) {
        for (int k = 0; k < channels; ++k)
          read.push_back(static_cast<size_t>(row) * width + static_cast<size_t>(channels * column + k));
      }
    }
    ASSERT_TRUE(read.empty() || *std::max_element(read.begin(), read.end()) < plane.size());
  }

  Bytes shrunk() const {
    Bytes target(static_cast<size_t>(size.shrunk_width * (size.shrunk_height * 3 / 2 + 2)));
    resize_NV21_opt(luma.data(), chroma.data(), target.data(), size.width, size.height, size.shrunk_width,
                    size.shrunk_height);
    return target;
  }

  Case size;
  Bytes luma, chroma;
  std::vector<size_t> luma_read, chroma_read;
};

void scramble_unread(Bytes& plane, const std::vector<size_t>& read) {
  std::vector<bool> kept(plane.size());
  for (const size_t at : read) kept[at] = true;
  for (size_t i = 0; i < plane.size(); ++i)
    if (!kept[i]) plane[i] = static_cast<uint8_t>(~plane[i]);
}

TEST(SampledNv21, WhatIsLeftOutChangesNothing) {
  std::mt19937 random(7);
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.why);
    Planes planes(c);
    for (Bytes* plane : {&planes.luma, &planes.chroma})
      for (uint8_t& byte : *plane) byte = static_cast<uint8_t>(random());
    const Bytes expected = planes.shrunk();
    scramble_unread(planes.luma, planes.luma_read);
    scramble_unread(planes.chroma, planes.chroma_read);
    EXPECT_EQ(planes.shrunk(), expected);
  }
}

/// In a white picture any byte with a weight that is lowered by one makes something less than white, since
/// results are truncated. All bytes of a small picture, some of a large one.
void expect_every_byte_counts(Planes& planes, Bytes& plane, const std::vector<size_t>& read) {
  const Bytes white = planes.shrunk();
  constexpr size_t kTries = 1000;
  const size_t step = std::max<size_t>(1, read.size() / kTries | 1);
  for (size_t i = 0; i < read.size(); i += step) {
    plane[read[i]] = 254;
    EXPECT_TRUE(planes.shrunk() != white) << "byte " << read[i];
    plane[read[i]] = 255;
  }
}

TEST(SampledNv21, WhatIsKeptCounts) {
  for (const Case& c : kCases) {
    SCOPED_TRACE(c.why);
    Planes planes(c);
    const morvale::Steps step{morvale::q8_step(c.width, c.shrunk_width),
                              morvale::q8_step(c.height, c.shrunk_height)};
    const bool averages = morvale::is_half_ratio(step);
    const auto width = static_cast<size_t>(c.width);
    // Averaging writes one more row behind an odd count. Behind luma that is chroma's first, which is written
    // later: what it is made from is read and does not count.
    const size_t rows = static_cast<size_t>(3 * (c.shrunk_height / 2) + 1);
    if (averages && c.shrunk_height % 2 == 1)
      std::erase_if(planes.luma_read, [&](size_t at) { return at >= rows * width; });
    // A row of odd length ends inside its last pair: that pair's second byte is dropped.
    const std::vector<int32_t> whole = morvale::sampled_positions(step.x, averages, c.shrunk_width / 2);
    const size_t pairs = whole.empty() ? 0 : static_cast<size_t>(whole.back() + 1);
    std::erase_if(planes.chroma_read,
                  [&](size_t at) { return at % width >= 2 * pairs && at % width % 2 == 1; });
    expect_every_byte_counts(planes, planes.luma, planes.luma_read);
    expect_every_byte_counts(planes, planes.chroma, planes.chroma_read);
  }
}

TEST(SampledNv21, HowManyOfA12MegapixelFrame) {
  const Planes planes(kCases[0]);
  EXPECT_EQ(planes.luma_read.size(), 480u * 360);
  EXPECT_EQ(planes.chroma_read.size(), 480u * 180);
}

}  // namespace
