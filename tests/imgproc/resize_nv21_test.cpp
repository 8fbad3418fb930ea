// NV21 scaling: small pictures by hand, then every member against a second statement of its rule. That
// statement notes how far it had to read, and the kernel gets exactly those bytes in front of a page without
// access.
#include <morvale/imgproc/resize_nv21.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <random>
#include <string>
#include <vector>

#include "fakes/guarded_bytes.h"

namespace {

using namespace guarded;

// ---- The rules, stated a second time ----

/// Source bytes, and how many of them the rule asked for.
class Source {
 public:
  explicit Source(const Bytes& bytes) : bytes_(bytes) {}
  int at(int index) {
    reach_ = std::max(reach_, static_cast<size_t>(index) + 1);
    return bytes_.at(static_cast<size_t>(index));
  }
  Bytes reached() const { return {bytes_.begin(), bytes_.begin() + static_cast<std::ptrdiff_t>(reach_)}; }

 private:
  const Bytes& bytes_;
  size_t reach_ = 0;
};

/// Sample (row, column) of a plane, and where output (row, column) goes.
using Sample = std::function<int(int, int)>;
using Store = std::function<void(int, int, int)>;

int step_of(int source, int destination) { return destination == 0 ? 0 : source * 256 / destination; }
bool is_half(int step) { return step % 256 == 128; }

void scale(const Sample& sample, int step_x, int step_y, int columns, int rows, const Store& store) {
  if (is_half(step_x) && is_half(step_y)) {
    const int dx = step_x / 256, dy = step_y / 256;
    for (int y = 0; y < rows + rows % 2; ++y)
      for (int x = 0; x < columns; ++x) {
        const int r = y / 2 * (2 * dy + 1), c = x / 2 * (2 * dx + 1);
        std::vector<int> seen;
        for (const int row : y % 2 == 0 ? std::vector{r} : std::vector{r + dy, r + dy + 1})
          for (const int column : x % 2 == 0 ? std::vector{c} : std::vector{c + dx, c + dx + 1})
            seen.push_back(sample(row, column));
        int sum = 0;
        for (const int value : seen) sum += value;
        store(y, x, sum / static_cast<int>(seen.size()));
      }
    return;
  }
  for (int y = 0; y < rows; ++y)
    for (int x = 0; x < columns; ++x) {
      const int fx = x * step_x % 256, fy = y * step_y % 256;
      int sum = 0;
      for (int i = 0; i < 4; ++i) {
        const int weight = (i % 2 == 0 ? 256 - fx : fx) * (i < 2 ? 256 - fy : fy);
        if (weight != 0) sum += weight * sample(y * step_y / 256 + i / 2, x * step_x / 256 + i % 2);
      }
      store(y, x, sum / 65536);
    }
}

/// luma_at, vu_at: where the planes begin in their sources; both may be the same source.
void resize_by_the_rule(Source& luma, int luma_at, Source& vu, int vu_at, Bytes& dst, int sw, int sh, int dw,
                        int dh) {
  const int step_x = step_of(sw, dw), step_y = step_of(sh, dh);
  const auto put = [&](int at, int value) { dst.at(static_cast<size_t>(at)) = static_cast<uint8_t>(value); };
  scale([&](int r, int c) { return luma.at(luma_at + r * sw + c); }, step_x, step_y, dw, dh,
        [&](int y, int x, int value) { put(y * dw + x, value); });
  for (int channel = 0; channel < 2; ++channel)
    scale([&](int r, int c) { return vu.at(vu_at + r * sw + 2 * c + channel); }, step_x, step_y, (dw + 1) / 2,
          dh / 2,
          [&](int y, int x, int value) {
            if (2 * x + channel < dw) put(dw * dh + y * dw + 2 * x + channel, value);
          });
}

struct Scaling {
  int sw, sh, dw, dh;
  const char* why;
};

std::string describe(const Scaling& s) {
  return size_text(s.sw, s.sh) + " to " + size_text(s.dw, s.dh) + ": " + s.why;
}

/// Room for the image and the one extra row that half-ratio averaging may write.
size_t room(const Scaling& s) {
  return static_cast<size_t>(std::max(s.dw, 0) * (std::max(s.dh, 0) + std::max(s.dh, 0) / 2 + 1));
}

void expect_scaled(const Scaling& s, Pattern pattern, uint32_t seed) {
  SCOPED_TRACE(describe(s) + ", seed " + std::to_string(seed));
  // Enough for every read of a neighbour right of or below the picture.
  const auto plane = static_cast<size_t>((s.sw + 4) * (s.sh + 8) + 64);
  const Bytes luma_bytes = pattern_bytes(pattern, plane, seed),
              vu_bytes = pattern_bytes(pattern, plane, seed + 1);
  const Bytes both_bytes = pattern_bytes(pattern, 2 * plane, seed + 2);
  Source luma(luma_bytes), vu(vu_bytes), both(both_bytes);
  const Bytes held = random_bytes(room(s), seed + 3);
  Bytes two_planes = held, one_image = held;
  resize_by_the_rule(luma, 0, vu, 0, two_planes, s.sw, s.sh, s.dw, s.dh);
  resize_by_the_rule(both, 0, both, s.sw * s.sh, one_image, s.sw, s.sh, s.dw, s.dh);
  const auto row = static_cast<size_t>(std::max(s.dw, 1));
  for (const Edge edge : kEdges) {
    GuardedBytes luma_src(luma.reached(), edge), vu_src(vu.reached(), edge), src(both.reached(), edge);
    CanaryBytes opt(held), plain(held);
    resize_NV21_opt(luma_src.data(), vu_src.data(), opt.data(), s.sw, s.sh, s.dw, s.dh);
    expect_same(two_planes, opt.bytes(), row, "resize_NV21_opt");
    resize_NV21(src.data(), plain.data(), s.sw, s.sh, s.dw, s.dh);
    expect_same(one_image, plain.bytes(), row, "resize_NV21");
  }
}

// ---- Any size ----

TEST(ResizeNV21, ByHand) {
  struct {
    int sw, sh, dw, dh;
    const char *luma, *vu, *expected, *why;
  } const cases[] = {
      // The corner of each 3 x 3 block, the mean of its columns 1 and 2 (25.5, 55.5), of its rows 1 and 2, of
      // all four (132 / 4, 253 / 4); pairs alike. Chroma rows come in twos: one more lies behind the image.
      {6, 3, 4, 2, "10 20 31 40 50 61  12 24 37 41 55 68  14 29 42 43 60 70",
       "1 2 10 20 13 31  4 6 20 30 41 51  7 9 22 33 44 50", "10 25 40 55  13 33 42 63  1 2 11 25  5 7 31 41",
       "3:2 averages, truncated"},
      {5, 5, 2, 2, "1 0 20 31 0  0 0 0 0 0  40 0 50 61 0  43 0 70 84 0  0 0 0 0 0",
       "7 7 7 7 7  7 7 7 7 7  7 7 7 7 7  7 7 7 7 7  7 7", "1 25  41 66  7 7  7 7",
       "5:2 averages columns and rows 2 and 3"},
      // (171 * 100 + 85 * 200) / 256 = 133.2; (86 * 200 + 170 * 255) / 256 = 236.5. Pairs take the same step:
      // V is 171 parts of pair 1 and 85 of what lies behind it; its U does not fit the odd width.
      {4, 2, 3, 2, "10 100 200 255  0 255 0 255", "3 8 40 90 80 201", "10 133 236  0 170 169  3 8 53",
       "bilinear, step 341: 0, 1 + 85/256, 2 + 170/256"},
      {5, 1, 3, 1, "0 0 255 0 255", "", "0 169 83", "step 426.67 is truncated: 1 + 170/256, 3 + 84/256"},
      {1, 4, 1, 3, "10 100 200 255", "3 8 40 90", "10 133 236 3", "the same downwards"},
      {3, 2, 2, 2, "10 20 31  40 51 60  200 200 200", "5 5 5 5 5 5", "10 25  40 55  5 5",
       "a half in one direction only is bilinear: no averaging of rows 1 and 2"},
  };
  for (const auto& c : cases) {
    const Bytes expected = bytes_of(c.expected);
    CanaryBytes dst(expected.size());
    resize_NV21_opt(bytes_of(c.luma).data(), bytes_of(c.vu).data(), dst.data(), c.sw, c.sh, c.dw, c.dh);
    expect_same(expected, dst.bytes(), static_cast<size_t>(c.dw), c.why);
  }
}

TEST(ResizeNV21, EverySizeMatchesTheRuleAndReadsNoMoreThanItNeeds) {
  const Scaling cases[] = {
      {192, 108, 128, 72, "3:2, averaging"},
      {128, 72, 128, 72, "a copy: every neighbour's weight is 0"},
      {240, 136, 16, 9, "15:1, sampling in one direction"},
      {540, 1200, 57, 128, "a portrait frame: truncated steps drift from the true ratio"},
      {10, 15, 4, 6, "5:2, averaging"},
      {21, 9, 6, 6, "7:2 by 3:2, averaging"},
      {4, 4, 8, 8, "1:2, averaging with no whole column between"},
      {12, 10, 8, 4, "3:2 by 5:2, averaging"},
      {194, 194, 129, 129, "averaging into an odd width: the last pair keeps V alone"},
      {197, 197, 131, 131, "averaging with an odd number of chroma rows: one more is written"},
      {12, 8, 8, 8, "half a pixel to the right only"},
      {8, 12, 8, 8, "half a pixel downwards only"},
      {6, 6, 4, 1, "one row has no chroma"},
      {6, 6, 1, 4, "one column"},
      {1, 1, 5, 5, "one pixel, read with what lies behind it"},
      {6, 6, 0, 4, "no width"},
      {6, 6, 4, 0, "no height"},
  };
  uint32_t seed = 1;
  for (const Scaling& s : cases)
    for (const Pattern pattern : kPatterns) expect_scaled(s, pattern, seed += 10);
  std::mt19937 random(20240511);
  const auto size = [&](unsigned least) { return static_cast<int>(least + (random() >> 9) % 40); };
  for (int i = 0; i < 250; ++i)
    expect_scaled({size(1), size(1), size(0), size(0), "drawn"}, kPatterns[static_cast<size_t>(i % 4)],
                  seed += 10);
}

TEST(ResizeNV21, AShrinkOfAnEvenPictureReadsNothingOutsideIt) {
  for (int sw = 2; sw <= 16; sw += 2)
    for (int sh = 2; sh <= 12; sh += 2)
      for (int dw = 1; dw <= sw; ++dw)
        for (int dh = 1; dh <= sh; ++dh) {
          // An odd last pair of less than a halving blends with the pair behind it.
          if (dw % 2 == 1 && 2 * dw > sw) continue;
          SCOPED_TRACE(describe({sw, sh, dw, dh, "even"}));
          const auto pixels = static_cast<size_t>(sw * sh);
          GuardedBytes luma(random_bytes(pixels, 1), Edge::kBack),
              vu(random_bytes(pixels / 2, 2), Edge::kBack);
          CanaryBytes dst(room({sw, sh, dw, dh, ""}));
          resize_NV21_opt(luma.data(), vu.data(), dst.data(), sw, sh, dw, dh);
        }
}

// ---- Fixed ratios ----

struct FixedRatio {
  const char* name;
  void (*resize)(const uint8_t*, uint8_t*, int, int);
  /// The destination's size for a source size.
  int (*size)(int);
  /// Output chroma rows and pairs that exist for a source height and width; the others keep what they held.
  int (*chroma_rows)(int);
  int (*pairs)(int);
  /// One output sample, rows and columns counted in pixels or pairs of a plane of `rows` x `columns`.
  int (*rule)(const Sample&, int rows, int columns, int y, int x);
};

int enlarged_twice(const Sample& sample, int rows, int columns, int y, int x) {
  const auto along = [&](int row) {
    const int a = sample(row, std::min(x / 2, columns - 1)),
              b = sample(row, std::min(x / 2 + 1, columns - 1));
    return x % 2 == 0 ? a : (a + b + 1) / 2;
  };
  return y % 2 == 0 ? along(y / 2) : (along(y / 2) + along(std::min(y / 2 + 1, rows - 1)) + 1) / 2;
}

int sampled(const Sample& sample, int /*rows*/, int /*columns*/, int y, int x) {
  return sample(2 * y, 2 * x);
}

int mean_of_nine(const Sample& sample, int /*rows*/, int /*columns*/, int y, int x) {
  int sum = 4;
  for (int i = 0; i < 9; ++i) sum += sample(3 * y + i / 3, 3 * x + i % 3);
  return sum / 9;
}

const FixedRatio kFixedRatios[] = {
    {"resize_NV21_2x_up", resize_NV21_2x_up, [](int n) { return 2 * n; }, [](int h) { return h / 2 * 2; },
     [](int w) { return w < 2 ? 0 : w; }, enlarged_twice},
    {"resize_NV21_2x_down", resize_NV21_2x_down, [](int n) { return n / 2; }, [](int h) { return h / 4; },
     [](int w) { return w / 4; }, sampled},
    {"resize_NV21_3x_down", resize_NV21_3x_down, [](int n) { return n / 3; }, [](int h) { return h / 6; },
     [](int w) { return w / 6; }, mean_of_nine},
};

Bytes fixed_ratio_by_the_rule(const FixedRatio& k, const Bytes& src, Bytes dst, int width, int height) {
  const int dw = k.size(width), dh = k.size(height);
  const auto put = [&](int at, int value) { dst.at(static_cast<size_t>(at)) = static_cast<uint8_t>(value); };
  for (int y = 0; y < dh; ++y)
    for (int x = 0; x < dw; ++x)
      put(y * dw + x, k.rule([&](int r, int c) { return src.at(static_cast<size_t>(r * width + c)); }, height,
                             width, y, x));
  for (int channel = 0; channel < 2; ++channel) {
    const Sample sample = [&](int r, int c) {
      return src.at(static_cast<size_t>(width * height + r * width + 2 * c + channel));
    };
    for (int y = 0; y < k.chroma_rows(height); ++y)
      for (int x = 0; x < k.pairs(width); ++x)
        put(dw * dh + y * dw + 2 * x + channel, k.rule(sample, height / 2, width / 2, y, x));
  }
  return dst;
}

/// An odd width asks the last pair for its V alone: at the end of the image the byte behind it is not there.
TEST(ResizeNV21, AnOddWidthReadsHalfOfItsLastPair) {
  for (const int width : {35, 37, 39}) {
    const size_t size = static_cast<size_t>(width) * 12;
    guarded::GuardedBytes src(guarded::random_bytes(size, 5), guarded::Edge::kBack);
    std::vector<uint8_t> roomy(size + 64, 0), expected(size), actual(size);
    std::copy(src.bytes().begin(), src.bytes().end(), roomy.begin());
    resize_NV21(roomy.data(), expected.data(), width, 8, width, 7);
    resize_NV21(src.data(), actual.data(), width, 8, width, 7);
    EXPECT_EQ(expected, actual) << width;
  }
}

TEST(ResizeNV21Fixed, EverySizeMatchesTheRuleInsideTheImages) {
  uint32_t seed = 1;
  for (const FixedRatio& k : kFixedRatios)
    for (const int width :
         {1, 2, 3, 4, 5, 6, 7, 8, 11, 12, 15, 16, 17, 18, 23, 24, 31, 32, 33, 34, 48, 50, 63, 64, 66, 97})
      for (const int height : {1, 2, 3, 4, 5, 6, 7, 8, 9, 12, 13})
        for (const Edge edge : kEdges) {
          SCOPED_TRACE(std::string(k.name) + " " + size_text(width, height) + ", seed " +
                       std::to_string(++seed));
          const Bytes src =
              pattern_bytes(kPatterns[seed % 4], static_cast<size_t>(width * (height + height / 2)), seed);
          const int dw = k.size(width), dh = k.size(height);
          const Bytes held = random_bytes(static_cast<size_t>(dw * (dh + dh / 2)), seed + 1);
          GuardedBytes guarded_src(src, edge);
          CanaryBytes dst(held);
          k.resize(guarded_src.data(), dst.data(), width, height);
          expect_same(fixed_ratio_by_the_rule(k, src, held, width, height), dst.bytes(),
                      static_cast<size_t>(std::max(dw, 1)), "");
        }
}

TEST(ResizeNV21Fixed, PicturesByHand) {
  struct {
    void (*resize)(const uint8_t*, uint8_t*, int, int);
    int width, height;
    const char *src, *expected, *why;
  } const cases[] = {
      {resize_NV21_2x_up, 2, 2, "10 21 30 250 7 9",
       "10 16 21 21  20 78 136 136  30 140 250 250  30 140 250 250  7 9 7 9  7 9 7 9",
       "means round up, first along the rows, then between them; edges repeat"},
      {resize_NV21_2x_up, 4, 2, "0 1 2 3  0 1 2 3  1 100 4 201",
       "0 1 1 2 2 3 3 3  0 1 1 2 2 3 3 3  0 1 1 2 2 3 3 3  0 1 1 2 2 3 3 3 "
       "1 100 3 151 4 201 4 201  1 100 3 151 4 201 4 201",
       "V and U apart"},
      {resize_NV21_2x_down, 4, 4, "1 2 3 4  5 6 7 8  9 10 11 12  13 14 15 16  17 18 19 20  21 22 23 24",
       "1 3 9 11 17 18", "the top-left of each block, not a mean"},
      {resize_NV21_3x_down, 3, 3, "0 1 0  1 1 0  1 0 0  99 99 99", "0", "a mean of 4/9 rounds down"},
      {resize_NV21_3x_down, 3, 3, "0 1 0  1 1 0  1 0 1  99 99 99", "1", "a mean of 5/9 rounds up"},
  };
  for (const auto& c : cases) {
    const Bytes expected = bytes_of(c.expected);
    CanaryBytes dst(expected.size());
    c.resize(bytes_of(c.src).data(), dst.data(), c.width, c.height);
    expect_same(expected, dst.bytes(), expected.size(), c.why);
  }
}

TEST(ResizeNV21Fixed, SizesTooSmallWriteNothing) {
  const Bytes src(64, 77), held = random_bytes(64, 3);
  CanaryBytes dst(held);
  for (const FixedRatio& k : kFixedRatios)
    for (const auto& [width, height] : kEmptySizes) {
      k.resize(src.data(), dst.data(), width, height);
      expect_same(held, dst.bytes(), 8, std::string(k.name) + " " + size_text(width, height));
    }
}

}  // namespace
