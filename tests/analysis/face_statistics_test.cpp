/// WriteFaceInfo: brightness and trimmed colour figures of one face.
#include <climits>
#include <cstring>

#include "fakes/core_fixture.h"

namespace {

struct Sample {
  uint8_t r, g, b;
  uint8_t score = 255;
  uint8_t luma = 0;
  uint8_t mask = 1;
};
using Samples = std::vector<Sample>;

Sample grey(int value) {
  const auto v = static_cast<uint8_t>(value);
  return {v, v, v};
}

/// `count` samples; sample i is make(i). They come in scrambled order: the measurement must sort them.
template <typename Make>
Samples scrambled(int count, int stride, Make make) {
  Samples samples;
  for (int i = 0; i < count; ++i) samples.push_back(make(i * stride % count));
  return samples;
}

class FaceStatistics : public CoreFixture {
 protected:
  FaceStatistics() {
    start(16);
    core_.segFactor = 48;
  }

  /// Measures the samples as a face of one row into block `face` and returns the block.
  std::array<int32_t, 14> measure(const Samples& samples, int face = 0) {
    std::vector<uint8_t> scores, luma, mask, rgb;
    for (const Sample& s : samples) {
      scores.push_back(s.score);
      luma.push_back(s.luma);
      mask.push_back(s.mask);
      rgb.insert(rgb.end(), {s.r, s.g, s.b});
    }
    const int n = static_cast<int>(samples.size());
    forget();
    core_.WriteFaceInfo(scores.data(), luma.data(), rgb.data(), mask.data(), n, -1, 0, n, 0, 1, face);
    return words(core_.result.meta[face]);
  }

  struct Figures {
    int low, mean, high;  ///< distance to the low band, mean, distance to the high band
    bool operator==(const Figures&) const = default;
  };
  Figures channel(int c) const {
    const PersonMeta& m = core_.result.meta[0];
    return {m.hsvMin[c], m.hsv[c], m.box[c]};
  }
  friend std::ostream& operator<<(std::ostream& out, const Figures& f) {
    return out << f.low << " " << f.mean << " " << f.high;
  }
};

TEST_F(FaceStatistics, PixelsCountByMaskScoreAndLuma) {
  struct Case {
    Sample pixel;
    int above_200, above_230, mean_luma, value;
  };
  const Case cases[] = {{{9, 9, 9, 255, 200, 1}, 0, 0, 200, 9}, {{9, 9, 9, 255, 201, 255}, 1, 0, 201, 9},
                        {{9, 9, 9, 255, 230, 1}, 1, 0, 230, 9}, {{9, 9, 9, 255, 231, 1}, 1, 1, 231, 9},
                        {{9, 9, 9, 201, 231, 1}, 1, 1, 231, 9}, {{9, 9, 9, 200, 231, 1}, 1, 1, 231, 0},
                        {{9, 9, 9, 51, 231, 1}, 1, 1, 231, 0},  {{9, 9, 9, 50, 231, 1}, 0, 0, 0, 0},
                        {{9, 9, 9, 255, 231, 0}, 0, 0, 0, 0}};
  for (const Case& c : cases) {
    measure(Samples(20, c.pixel));  // 20 pixels: every band has entries
    const PersonMeta& m = core_.result.meta[0];
    EXPECT_EQ(m.brightCount[0], static_cast<uint32_t>(20 * c.above_200))
        << +c.pixel.score << " " << +c.pixel.luma;
    EXPECT_EQ(m.brightCount[1], static_cast<uint32_t>(20 * c.above_230))
        << +c.pixel.score << " " << +c.pixel.luma;
    EXPECT_EQ(m.faceYavg, c.mean_luma);
    EXPECT_EQ(m.hsv[2], c.value) << +c.pixel.score;
  }
  EXPECT_EQ(measure({{0, 0, 0, 60, 10, 1}, {0, 0, 0, 60, 11, 1}, {0, 0, 0, 60, 11, 1}})[2], 10);  // 10.67
}

TEST_F(FaceStatistics, TheRightColumnAndTheBottomRowAreNotVisited) {
  // 6 x 5 pixels; luma 201 inside columns 1..3, rows 1..2, else 255.
  std::vector<uint8_t> scores(30, 60), mask(30, 1), luma(30, 255), rgb(90, 0);
  for (const std::size_t row : {1u, 2u})
    for (const std::size_t column : {1u, 2u, 3u}) luma[row * 6 + column] = 201;
  core_.WriteFaceInfo(scores.data(), luma.data(), rgb.data(), mask.data(), 6, 0, 1, 4, 1, 3, 2);
  EXPECT_EQ(core_.result.meta[2].brightCount[0], 6u);
  EXPECT_EQ(core_.result.meta[2].brightCount[1], 0u);
  // An empty rectangle, and one turned inside out, have no pixels.
  for (const int right : {1, 0}) {
    core_.WriteFaceInfo(scores.data(), luma.data(), rgb.data(), mask.data(), 6, 0, 1, right, 1, 3, 2);
    EXPECT_EQ(core_.result.meta[2].brightCount[0], 0u);
    EXPECT_EQ(core_.result.meta[2].faceYavg, 0);
    EXPECT_EQ(core_.result.meta[2].hsv[0], 360);
    EXPECT_EQ(core_.result.meta[2].hsv[2], 0);
  }
}

TEST_F(FaceStatistics, SkinRatioIsTheRectanglesShareOfTheMap) {
  std::vector<uint8_t> plane(256 * 192, 0), rgb(3 * 256 * 192, 0);
  const auto ratio = [&](int right, int bottom) {
    core_.WriteFaceInfo(plane.data(), plane.data(), rgb.data(), plane.data(), 256, 0, 0, right, 0, bottom, 0);
    return core_.result.meta[0].skinRatio;
  };
  EXPECT_EQ(ratio(256, 192), 1000);
  EXPECT_EQ(ratio(64, 48), 62);  // 62.5
  EXPECT_EQ(ratio(7, 7), 0);     // 0.997
  EXPECT_EQ(ratio(0, 192), 0);
  core_.segFactor = 64;  // the rows in use count, not the rectangle's map
  EXPECT_EQ(ratio(256, 192), 750);
}

TEST_F(FaceStatistics, OnlyThreeFacesAreMeasured) {
  core_.result.meta[2].box[3] = 17;  // the last word is nobody's
  measure(Samples(100, grey(50)), 2);
  EXPECT_EQ(words(core_.result.meta[2]),
            (std::array<int32_t, 14>{0, 0, 0, 0, 0, 0, 360, 0, 50, 2, 0, 0, 0, 17}));
  forget();
  const PersonWholeMeta before = core_.result;
  std::vector<uint8_t> plane(100 * 3, 255);
  uint8_t* p = plane.data();
  for (const int nobody : {3, INT_MAX, -1, INT_MIN})
    core_.WriteFaceInfo(p, p, p, p, 100, 0, 0, 100, 0, 1, nobody);
  EXPECT_TRUE(fakes::platform().log.empty());
  EXPECT_EQ(std::memcmp(&core_.result, &before, sizeof before), 0);
}

// 100 greys 0, 2, 4 ... 198. Three (under a display: five) per cent go from each end, the bands are the next
// seven.
TEST_F(FaceStatistics, TheTrimIsStrongerUnderADisplay) {
  const Samples ramp = scrambled(100, 37, [](int i) { return grey(2 * i); });
  measure(ramp);
  EXPECT_EQ(channel(2), (Figures{87, 99, 87}));  // 3..9, 3..96, 90..96
  EXPECT_EQ(lines(fakes::kDebug),
            (std::vector<std::string>{"Morvale_capture nonUDC", "Morvale capture aver 0|  0 0 99 ",
                                      "Morvale capture max 0| 0 0 186 ", "Morvale capture min 0| 0 0 12 ",
                                      "Morvale capture Debug hsv min: 0 0 87  hsvmax 0 0 87  avg 0 0 99\n"}));
  record_.isUDC = -1;
  measure(ramp);
  EXPECT_EQ(channel(2), (Figures{83, 99, 83}));  // 5..11, 5..94, 88..94
  EXPECT_EQ(lines(fakes::kDebug)[0], "Morvale_capture isUDC");
  measure(ramp);  // nothing adds up over two calls
  EXPECT_EQ(channel(2), (Figures{83, 99, 83}));
}

// The bounds are products and sums in double, cut at the end, left to right. Whole-number arithmetic and a
// fused multiply-add put them elsewhere.
TEST_F(FaceStatistics, BandBoundsRoundLikeDoubles) {
  // 140 samples: 4.2 + 9.8 is 13.999999999999998, so the low band is 4..12.
  measure(scrambled(140, 37, [](int i) { return grey(i < 13 ? i : 100 + i); }));
  EXPECT_EQ(channel(2), (Figures{154, 162, 68}));
  // 270 samples: 270 - 8.1 - 18.9 is 242.99999999999997, so the high band begins at 242.
  measure(scrambled(270, 37, [](int i) { return grey(i < 243 ? 100 : 200); }));
  EXPECT_EQ(channel(2), (Figures{7, 107, 87}));
}

TEST_F(FaceStatistics, FewSamplesLeaveBandsEmpty) {
  measure(scrambled(7, 3, [](int i) { return grey(10 + 10 * i); }));
  EXPECT_EQ(channel(2), (Figures{35, 35, 35}));  // no low band, mean of 0..5, no high band
  measure(scrambled(10, 3, [](int i) { return grey(10 + 10 * i); }));
  EXPECT_EQ(channel(2), (Figures{40, 50, 50}));  // entry 0, 0..8, no high band
  // Green: the empty band's hue of 0 is 120 away, so all is done again: no low band, 1..8, entry 8.
  measure(scrambled(10, 3, [](int i) { return Sample{0, static_cast<uint8_t>(10 + 10 * i), 0}; }));
  EXPECT_EQ(channel(0), (Figures{120, 120, 0}));
  EXPECT_EQ(channel(1), (Figures{255, 255, 0}));
  EXPECT_EQ(channel(2), (Figures{55, 55, 35}));
  EXPECT_EQ(measure({})[6], 360);
}

// 80 reds and 20 blues: the high band's hue is 240, the mean 43. So ten per cent go from each end and the
// bands are five wide, in all three channels and under a display too.
TEST_F(FaceStatistics, AWideSpreadOfHuesTrimsHarder) {
  const Samples samples = scrambled(100, 37, [](int i) {
    const auto v = static_cast<uint8_t>(2 * i + 1);
    return i < 80 ? Sample{v, 0, 0} : Sample{0, 0, v};
  });
  for (const int udc : {0, 1}) {
    record_.isUDC = udc;
    measure(samples);
    EXPECT_EQ(channel(0), (Figures{30, 30, 210}));
    EXPECT_EQ(channel(1), (Figures{0, 255, 0}));
    EXPECT_EQ(channel(2), (Figures{75, 100, 75}));  // 10..14, 10..89, 85..89
  }
}

// Hues 0 and 60. With 66 sixties the mean is 40 and stays; with 68 it is 41 and is done again.
TEST_F(FaceStatistics, AHueDistanceOf40IsNotYetWide) {
  const auto samples = [](int sixties) {
    return scrambled(100, 37, [=](int i) {
      return i < 100 - sixties ? Sample{200, 0, 0} : Sample{200, 200, 0};
    });
  };
  measure(samples(66));
  EXPECT_EQ(channel(0), (Figures{40, 40, 20}));
  measure(samples(68));
  EXPECT_EQ(channel(0), (Figures{43, 43, 17}));
}

TEST_F(FaceStatistics, HuesBelowZeroStaySoUntilTheMeanIsWritten) {
  measure(Samples(100, Sample{200, 100, 150}));
  EXPECT_EQ(channel(0), (Figures{0, 330, 0}));
  EXPECT_EQ(channel(1).mean, 127);
  EXPECT_EQ(lines(fakes::kDebug)[1], "Morvale capture aver 0|  -30 127 200 ");
  // One -60 in the low band of seven: -8.57 is cut to -8. In the mean of 94 it vanishes: 0, written as 360.
  measure(scrambled(100, 37, [](int i) { return i < 4 ? Sample{255, 0, 255} : Sample{255, 0, 0}; }));
  EXPECT_EQ(channel(0), (Figures{8, 360, 0}));
}

// 41.9999993 in double; rounded to float first it is 42. Kept equal to bgr2hsv_pixel_v2.
TEST_F(FaceStatistics, HueIsRoundedToFloatBeforeItIsCut) {
  measure(Samples(100, Sample{10, 7, 0}));
  EXPECT_EQ(channel(0).mean, 42);
  measure(Samples(100, Sample{14, 4, 13}));
  EXPECT_EQ(channel(0).mean, 306);
}

}  // namespace
