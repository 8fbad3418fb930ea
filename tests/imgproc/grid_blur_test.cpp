// The masked blur: weights and pixels by hand, then both passes against a second statement of the rule.
#include <morvale/imgproc/grid_blur.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <numeric>
#include <string>
#include <vector>

#include "fakes/guarded_bytes.h"

namespace {

using namespace guarded;
using Weights = std::vector<uint16_t>;
using Pass = void (*)(const uint8_t*, uint8_t*, const uint8_t*, int, int, const uint16_t*, int, int);

Weights gaussian(float sigma, int radius, int bits) {
  Weights weights(static_cast<size_t>(2 * radius + 1));
  EXPECT_EQ(0, GFilterCreation(sigma, radius, bits, weights.data()));
  return weights;
}

// ---- Weights ----

TEST(GridBlurWeights, ByHand) {
  struct {
    float sigma;
    int radius, bits;
    Weights expected;
    const char* why;
  } const cases[] = {
      {1.0F, 1, 8, {70, 116, 70}, "70.16, 115.68: the centre has what is left"},
      {1.0F, 1, 14, {4490, 7404, 4490}, "4490.3"},
      {1.0F, 2, 8, {14, 62, 104, 62, 14}, "13.95 rounds up, which leaves 62.46 of 62.52"},
      {0.5F, 1, 8, {27, 202, 27}, "27.26"},
      {1.0F, 0, 8, {256}, "no neighbours"},
      {0.0F, 2, 8, {0, 0, 256, 0, 0}, "no spread: the identity"},
      {-1.0F, 1, 14, {0, 16384, 0}, "a negative spread: the identity"},
      {std::numeric_limits<float>::quiet_NaN(), 1, 8, {0, 256, 0}, "not positive either"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.expected, gaussian(c.sigma, c.radius, c.bits)) << c.why;
}

// A wide flat curve is the trial: 169 weights of 1.51 each, all rounded up, would exceed one by far.
TEST(GridBlurWeights, FollowTheCurveAndSumToOne) {
  for (const int bits : {8, 14})
    for (const int radius : {1, 2, 3, 5, 8, 15, 40, 84, 127})
      for (const double ratio : {0.2, 0.33, 0.5, 1.0, 100.0}) {
        const auto sigma = static_cast<float>(radius * ratio);
        SCOPED_TRACE("sigma " + std::to_string(sigma) + ", radius " + std::to_string(radius) + ", bits " +
                     std::to_string(bits));
        const Weights weights = gaussian(sigma, radius, bits);
        EXPECT_EQ(1 << bits, std::accumulate(weights.begin(), weights.end(), 0));
        const auto curve = [&](int i) { return std::exp(-i * i / (2.0 * sigma * sigma)); };
        double sum = 0, carried = 0;
        for (int i = -radius; i <= radius; ++i) sum += curve(i);
        for (int i = radius; i > 0; --i) {
          const double wanted = curve(i) / sum * (1 << bits) + carried;
          carried = wanted - std::round(wanted);
          EXPECT_EQ(std::lround(wanted), weights[static_cast<size_t>(radius + i)]) << i;
          EXPECT_EQ(weights[static_cast<size_t>(radius - i)], weights[static_cast<size_t>(radius + i)]) << i;
        }
      }
}

TEST(GridBlurWeights, RefusesOtherSizes) {
  Weights weights(257, 77);
  for (const auto& [radius, bits] :
       {std::array{-1, 8}, std::array{128, 8}, std::array{2, 7}, std::array{2, 16}})
    EXPECT_EQ(-1, GFilterCreation(1.0F, radius, bits, weights.data())) << radius << " " << bits;
  EXPECT_EQ(Weights(257, 77), weights);
}

// ---- The passes ----

struct Direction {
  const char* name;
  Pass pass;
  int dx, dy;
};
const Direction kDirections[] = {{"GaussianBlur_Grid_Hori", GaussianBlur_Grid_Hori, 1, 0},
                                 {"GaussianBlur_Grid_Vert", GaussianBlur_Grid_Vert, 0, 1}};

Bytes blurred_by_the_rule(const Direction& d, const Bytes& src, const Bytes& grid, int width, int height,
                          const Weights& weights, int bits) {
  const int radius = static_cast<int>(weights.size() / 2);
  Bytes dst = src;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      if (grid[static_cast<size_t>(y / 8 * 600 + x / 8)] == 0) continue;
      int sum = 1 << (bits - 1);
      for (int i = -radius; i <= radius; ++i) {
        const int column = std::clamp(x + i * d.dx, 0, width - 1),
                  row = std::clamp(y + i * d.dy, 0, height - 1);
        sum += weights[static_cast<size_t>(radius + i)] * src[static_cast<size_t>(row * width + column)];
      }
      dst[static_cast<size_t>(y * width + x)] = static_cast<uint8_t>(sum >> bits);
    }
  return dst;
}

/// The grid up to the picture's last cell and no further.
size_t grid_size(int width, int height) {
  return static_cast<size_t>((height - 1) / 8 * 600 + (width - 1) / 8 + 1);
}

TEST(GridBlur, EverySizeAndMaskMatchesTheRule) {
  uint32_t seed = 1;
  for (const Direction& d : kDirections)
    for (const int width : {1, 2, 7, 8, 9, 15, 16, 17, 24, 33, 40})
      for (const int height : {1, 3, 8, 9, 16, 25})
        for (const int radius : {0, 1, 3, 12})
          for (const int bits : {8, 14}) {
            const Edge edge = kEdges[++seed % 2];
            SCOPED_TRACE(std::string(d.name) + " " + size_text(width, height) + ", radius " +
                         std::to_string(radius) + ", bits " + std::to_string(bits) + ", seed " +
                         std::to_string(seed));
            const auto pixels = static_cast<size_t>(width * height);
            const Bytes src = pattern_bytes(kPatterns[seed % 4], pixels, seed);
            Bytes grid = random_bytes(grid_size(width, height), seed + 1);
            for (uint8_t& cell : grid) cell = cell < 128 ? 0 : cell;
            const Weights weights = gaussian(static_cast<float>(radius) * 0.4F, radius, bits);
            GuardedBytes guarded_src(src, edge), guarded_grid(grid, edge);
            CanaryBytes dst(pixels);
            d.pass(guarded_src.data(), dst.data(), guarded_grid.data(), width, height, weights.data(), radius,
                   bits);
            expect_same(blurred_by_the_rule(d, src, grid, width, height, weights, bits), dst.bytes(),
                        static_cast<size_t>(width), "");
          }
}

TEST(GridBlur, ByHand) {
  const uint16_t weights[] = {64, 128, 64};
  const Bytes grid(601, 1);
  struct {
    int width, height;
    const char *src, *expected, *why;
  } const cases[] = {
      {3, 3, "0 0 0 0 160 0 0 0 0", "10 20 10 20 40 20 10 20 10", "a point spreads both ways"},
      {3, 1, "0 255 0", "64 128 64", "63.75 and 127.5 round up"},
      {2, 1, "200 100", "175 125", "edges repeat"},
      {1, 2, "200 100", "175 125", "downwards too"},
      {1, 1, "77", "77", "one pixel is all edge"},
  };
  for (const auto& c : cases) {
    const Bytes src = bytes_of(c.src);
    CanaryBytes between(src.size()), dst(src.size());
    GaussianBlur_Grid_Hori(src.data(), between.data(), grid.data(), c.width, c.height, weights, 1, 8);
    GaussianBlur_Grid_Vert(between.data(), dst.data(), grid.data(), c.width, c.height, weights, 1, 8);
    expect_same(bytes_of(c.expected), dst.bytes(), static_cast<size_t>(c.width), c.why);
  }
}

TEST(GridBlur, AFullGridIsThePlainBlurAndAnEmptyOneTheIdentity) {
  constexpr int kWidth = 37, kHeight = 29, kRadius = 4;
  const Weights weights = gaussian(1.7F, kRadius, 14);
  const Bytes src = random_bytes(kWidth * kHeight, 9);
  const Bytes full(grid_size(kWidth, kHeight), 255), empty(full.size(), 0);
  Bytes between(src.size()), dst(src.size());
  GaussianBlur_Grid_Hori(src.data(), between.data(), full.data(), kWidth, kHeight, weights.data(), kRadius,
                         14);
  GaussianBlur_Grid_Vert(between.data(), dst.data(), full.data(), kWidth, kHeight, weights.data(), kRadius,
                         14);
  // The plain blur, in floating point: exact, since the weights are.
  const auto plain = [&](const Bytes& picture, int dx, int dy) {
    Bytes out;
    for (int y = 0; y < kHeight; ++y)
      for (int x = 0; x < kWidth; ++x) {
        double sum = 0;
        for (int i = -kRadius; i <= kRadius; ++i) {
          const int row = std::clamp(y + i * dy, 0, kHeight - 1),
                    column = std::clamp(x + i * dx, 0, kWidth - 1);
          sum += weights[static_cast<size_t>(kRadius + i)] / 16384.0 *
                 picture[static_cast<size_t>(row * kWidth + column)];
        }
        out.push_back(static_cast<uint8_t>(std::floor(sum + 0.5)));
      }
    return out;
  };
  expect_same(plain(plain(src, 1, 0), 0, 1), dst, kWidth, "full grid");
  for (const Direction& d : kDirections) {
    d.pass(src.data(), dst.data(), empty.data(), kWidth, kHeight, weights.data(), kRadius, 14);
    expect_same(src, dst, kWidth, std::string(d.name) + ", empty grid");
  }
}

TEST(GridBlur, SizesBelowOneWriteNothing) {
  const Bytes src(64, 77), grid(601, 1), held = random_bytes(64, 3);
  const uint16_t weights[] = {64, 128, 64};
  CanaryBytes dst(held);
  for (const Direction& d : kDirections)
    for (const auto& [width, height] : kEmptySizes)
      d.pass(src.data(), dst.data(), grid.data(), width, height, weights, 1, 8);
  expect_same(held, dst.bytes(), 8, "destination");
}

}  // namespace
