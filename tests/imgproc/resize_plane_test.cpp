// Scaling of one plane: rows and columns by hand, then every member against a second statement of its rule.
#include <morvale/imgproc/resize_plane.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <morvale/imgproc/resize_nv21.h>
#include "fakes/guarded_bytes.h"

namespace {

using namespace guarded;

// ---- Any size ----

TEST(ResizeY1, IsTheLumaOfTheNV21Resize) {
  // The rule itself is stated and held in resize_nv21_test.cpp. Even heights: no extra row.
  uint32_t seed = 1;
  for (const int width : {3, 6, 8, 16, 20, 33})
    for (const int height : {3, 4, 6, 9, 24})
      for (const int dst_width : {1, 2, 4, 5, 8, 16, 32})
        for (const int dst_height : {2, 4, 6, 16, 24}) {
          SCOPED_TRACE(size_text(width, height) + " to " + size_text(dst_width, dst_height) + ", seed " +
                       std::to_string(++seed));
          const auto plane = static_cast<size_t>(dst_width * dst_height);
          const Bytes src = random_bytes(static_cast<size_t>(width * (height + 4) + 8), seed);
          CanaryBytes luma(plane), image(plane + plane / 2 + 2 * static_cast<size_t>(dst_width));
          resize_Y_1(src.data(), luma.data(), width, height, dst_width, dst_height);
          resize_NV21_opt(src.data(), src.data(), image.data(), width, height, dst_width, dst_height);
          const auto expected = image.bytes().first(plane);
          expect_same({expected.begin(), expected.end()}, luma.bytes(), static_cast<size_t>(dst_width), "");
        }
}

TEST(ResizeY1, AveragingWritesRowsInTwos) {
  // 194 : 129 is 384/256 once truncated. Output row 129 comes from source rows 193 and 194.
  const Bytes src = random_bytes(194 * 195, 5);
  CanaryBytes dst(129 * 130);
  resize_Y_1(src.data(), dst.data(), 194, 194, 129, 129);
  for (size_t x = 0; x < 129; x += 2) {
    const size_t column = x / 2 * 3;
    ASSERT_EQ((src[193 * 194 + column] + src[194 * 194 + column]) / 2, dst.bytes()[129 * 129 + x])
        << "column " << x;
  }
}

// ---- Enlarging by a fixed factor ----

/// What one output of a group is made of: (first * a + second * b + rounding) >> 8.
struct Blend {
  int first, second, rounding;
};
using Blends = std::vector<Blend>;

Blends blends_of(int factor) {
  Blends blends = {{255, 1, 1}};
  for (int k = 1; k < factor; ++k) blends.push_back({256 * (factor - k) / factor, 256 * k / factor, 1});
  return blends;
}

int blend(const Blend& weights, int a, int b) {
  return (weights.first * a + weights.second * b + weights.rounding) / 256;
}

using Enlarge = void (*)(const uint8_t*, uint8_t*, int, int, int);
void up2(const uint8_t* src, uint8_t* dst, int w, int h, int /*factor*/) { resize_y_2x_up(src, dst, w, h); }
void up4(const uint8_t* src, uint8_t* dst, int w, int h, int /*factor*/) { resize_y_4x_up(src, dst, w, h); }
void up6(const uint8_t* src, uint8_t* dst, int w, int h, int /*factor*/) { resize_y_6x_up(src, dst, w, h); }

struct Enlarger {
  Enlarge enlarge;
  Blends blends;
  int factor() const { return static_cast<int>(blends.size()); }
};

std::vector<Enlarger> enlargers() {
  std::vector<Enlarger> all = {
      {up2, {{256, 0, 0}, {128, 128, 128}}},  // a copy and (a + b + 1) >> 1, in 1/256
      {up4, {{255, 1, 1}, {192, 64, 1}, {128, 128, 1}, {64, 192, 1}}},
      {up6, {{255, 1, 0}, {213, 43, 0}, {171, 85, 0}, {128, 128, 0}, {85, 171, 0}, {43, 213, 0}}},
  };
  for (const int factor : {1, 2, 3, 4, 5, 7, 8, 12, 64}) all.push_back({resize_y, blends_of(factor)});
  return all;
}

/// Along one row or column of `n` samples, `step` apart; the last one is repeated.
Bytes enlarged_line(const uint8_t* samples, int n, int step, const Blends& blends) {
  Bytes line;
  for (int i = 0; i < n; ++i)
    for (const Blend& weights : blends) {
      const int a = samples[i * step];
      line.push_back(static_cast<uint8_t>(i == n - 1 ? a : blend(weights, a, samples[(i + 1) * step])));
    }
  return line;
}

Bytes enlarged_by_the_rule(const Bytes& src, int width, int height, const Enlarger& k) {
  const int out = k.factor() * width;
  Bytes wide;
  for (int y = 0; y < height; ++y) {
    const Bytes line = enlarged_line(&src[static_cast<size_t>(y * width)], width, 1, k.blends);
    wide.insert(wide.end(), line.begin(), line.end());
  }
  Blends down = k.blends;
  down[0] = {256, 0, 0};  // rows k * j keep what the horizontal pass wrote
  Bytes all(static_cast<size_t>(out * k.factor() * height));
  for (int x = 0; x < out; ++x) {
    const Bytes column = enlarged_line(&wide[static_cast<size_t>(x)], height, out, down);
    for (size_t y = 0; y < column.size(); ++y)
      all[y * static_cast<size_t>(out) + static_cast<size_t>(x)] = column[y];
  }
  return all;
}

TEST(ResizeYUp, EverySizeMatchesTheRuleInsideThePlanes) {
  uint32_t seed = 1;
  for (const Enlarger& k : enlargers())
    for (const int width : {1, 2, 3, 4, 5, 7, 8, 9, 15, 16, 17, 33})
      for (const int height : {1, 2, 3, 5}) {
        SCOPED_TRACE((k.enlarge == resize_y ? "resize_y, " : "fixed, ") + std::to_string(k.factor()) +
                     " times " + size_text(width, height) + ", seed " + std::to_string(++seed));
        const Bytes src = pattern_bytes(kPatterns[seed % 4], static_cast<size_t>(width * height), seed);
        const Bytes expected = enlarged_by_the_rule(src, width, height, k);
        for (const Edge edge : kEdges) {
          GuardedBytes guarded_src(src, edge);
          CanaryBytes dst(expected.size());
          k.enlarge(guarded_src.data(), dst.data(), width, height, k.factor());
          expect_same(expected, dst.bytes(), static_cast<size_t>(width * k.factor()), "");
        }
      }
}

TEST(ResizeYUp, RowsAndColumnsByHand) {
  struct {
    Enlarge enlarge;
    int factor;
    const char *src, *row, *why;
  } const cases[] = {
      {up4, 4, "10 250", "10 70 130 190 250 250 250 250", "2550 + 250 + 1 is still 10 / 256"},
      {up4, 4, "0 255", "1 63 127 191 255 255 255 255", "255:1 lifts black beside white to 1"},
      {up4, 4, "255 0", "254 191 127 63 0 0 0 0", "and darkens white beside black to 254"},
      {up2, 2, "10 21 22", "10 16 21 22 22 22", "means round up: 15.5, 21.5"},
      {up6, 6, "0 255", "0 42 84 127 170 212 255 255 255 255 255 255", "nothing added: 255, 10965 ... >> 8"},
      {up6, 6, "3 4", "3 3 3 3 3 3 4 4 4 4 4 4", "a mean of 3.5 is 3"},
      {up6, 6, "255 1", "254 212 170 128 85 43 1 1 1 1 1 1", "212.3, 170.7, 128, 85.3, 43.7"},
      {resize_y, 3, "255 255", "255 254 254 255 255 255", "170 + 85 is one short of 256"},
      {resize_y, 5, "0 255", "1 50 101 152 203 255 255 255 255 255", "weights 51, 102, 153, 204"},
      {resize_y, 1, "0 255 9", "1 254 9", "a factor of one blends along the row all the same"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.why);
    const Bytes src = bytes_of(c.src), row = bytes_of(c.row);
    const int n = static_cast<int>(src.size());
    const auto factor = static_cast<size_t>(c.factor);
    // A column has the row's blends, but for the first of each group: rows factor * j keep their pixels.
    Bytes rows, columns;
    for (size_t i = 0; i < row.size(); ++i) {
      rows.insert(rows.end(), row.begin(), row.end());
      columns.insert(columns.end(), factor, i % factor == 0 ? src[i / factor] : row[i]);
    }
    rows.resize(row.size() * factor);
    CanaryBytes from_row(rows.size()), from_column(columns.size());
    c.enlarge(src.data(), from_row.data(), n, 1, c.factor);
    c.enlarge(src.data(), from_column.data(), 1, n, c.factor);
    expect_same(rows, from_row.bytes(), row.size(), "one row");
    expect_same(columns, from_column.bytes(), factor, "one column");
  }
}

TEST(ResizeYUp, SizesAndFactorsOutsideTheLimitsWriteNothing) {
  const Bytes src(64, 77), held = random_bytes(64, 3);
  CanaryBytes dst(held);
  for (const auto& [width, height] : kEmptySizes) {
    for (const Enlarger& k : enlargers()) k.enlarge(src.data(), dst.data(), width, height, k.factor());
    resize_y_8x_up_RR_hori(src.data(), dst.data(), 8, 0, 0, width, height, 16);
    resize_y_8x_up_RR_vert(src.data(), dst.data(), 8, 0, 0, width, height, 16);
    resize_Y_1(src.data(), dst.data(), 4, 4, width, height);
  }
  for (const int factor : {0, -1, 65}) resize_y(src.data(), dst.data(), 2, 2, factor);
  expect_same(held, dst.bytes(), 8, "destination");
}

// ---- Enlarging a region eight times ----

const Blends kEight = {{255, 1, 0},   {224, 32, 0}, {192, 64, 0}, {160, 96, 0},
                       {128, 128, 0}, {96, 160, 0}, {64, 192, 0}, {32, 224, 0}};

struct Region {
  int stride, x, y, width, height;
};

TEST(ResizeY8xRegion, EachPassReadsTheRegionAndFillsItsRows) {
  const Region regions[] = {{1, 0, 0, 1, 1},   {9, 0, 0, 9, 4},   {20, 3, 2, 7, 3},
                            {20, 4, 1, 16, 2}, {40, 5, 0, 17, 5}, {40, 39, 3, 1, 6}};
  uint32_t seed = 1;
  for (const Region& r : regions) {
    SCOPED_TRACE(size_text(r.width, r.height) + " at " + size_text(r.x, r.y) + ", seed " +
                 std::to_string(++seed));
    // The source ends with the region's last pixel, and the destination with its last row.
    const int first = r.y * r.stride + r.x;
    const Bytes region = random_bytes(static_cast<size_t>((r.height - 1) * r.stride + r.width), seed);
    const auto run = [&](auto resize, const Bytes& held, int dst_stride) {
      CanaryBytes dst(held);
      for (const Edge edge : kEdges) {
        GuardedBytes src(region, edge);
        resize(src.data() - first, dst.data(), r.stride, r.x, r.y, r.width, r.height, dst_stride);
      }
      return Bytes(dst.bytes().begin(), dst.bytes().end());
    };
    const int wide = 8 * r.width + 3;
    Bytes hori = random_bytes(static_cast<size_t>((r.height - 1) * wide + 8 * r.width), seed);
    const Bytes hori_held = hori;
    for (int y = 0; y < r.height; ++y) {
      const Bytes line = enlarged_line(&region[static_cast<size_t>(y * r.stride)], r.width, 1, kEight);
      std::copy(line.begin(), line.end(), hori.begin() + y * wide);
    }
    expect_same(hori, run(resize_y_8x_up_RR_hori, hori_held, wide), static_cast<size_t>(wide), "hori");

    const int narrow = r.width + 2;
    Bytes vert = random_bytes(static_cast<size_t>((8 * r.height - 1) * narrow + r.width), seed);
    const Bytes vert_held = vert;
    for (int x = 0; x < r.width; ++x) {
      const Bytes line = enlarged_line(&region[static_cast<size_t>(x)], r.height, r.stride, kEight);
      for (size_t y = 0; y < line.size(); ++y)
        vert[y * static_cast<size_t>(narrow) + static_cast<size_t>(x)] = line[y];
    }
    expect_same(vert, run(resize_y_8x_up_RR_vert, vert_held, narrow), static_cast<size_t>(narrow), "vert");
  }
}

TEST(ResizeY8xRegion, BothPassesByHand) {
  const Bytes src = {0, 255};
  const Bytes line = {0, 31, 63, 95, 127, 159, 191, 223, 255, 255, 255, 255, 255, 255, 255, 255};
  CanaryBytes hori(16), vert(16);
  resize_y_8x_up_RR_hori(src.data(), hori.data(), 2, 0, 0, 2, 1, 16);
  resize_y_8x_up_RR_vert(src.data(), vert.data(), 1, 0, 0, 1, 2, 1);
  expect_same(line, hori.bytes(), 16, "hori");
  expect_same(line, vert.bytes(), 1, "vert");
}

}  // namespace
