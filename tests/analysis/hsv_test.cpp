/// Colour to hue, saturation, value.
#include <gtest/gtest.h>

#include <array>
#include <vector>

#include <morvale/morvale.h>

namespace {

using Triple = std::array<int, 3>;

TEST(Hsv, PixelsWrapTheirHueOnlyInTheFirstVariant) {
  struct Case {
    const char* why;
    Triple bgr, wrapped;
    int signed_hue;
  };
  const Case cases[] = {
      {"black", {0, 0, 0}, {0, 0, 0}, 0},
      {"grey", {100, 100, 100}, {0, 0, 100}, 0},
      {"red that leans to magenta", {200, 0, 255}, {312, 255, 255}, -47},
      {"red and blue tie: red first", {255, 0, 255}, {300, 255, 255}, -60},
      {"red and green tie: red first", {0, 255, 255}, {60, 255, 255}, 60},
      {"green and blue tie: green first", {255, 255, 0}, {180, 255, 255}, 180},
      {"brown", {10, 20, 30}, {30, 169, 30}, 30},
      {"green", {128, 255, 0}, {150, 255, 255}, 150},
      {"blue", {255, 0, 0}, {240, 255, 255}, 240},
      // Rounding the product to float lifts 41.9999993 to 42, and -53.9999986 to -54.
      {"hue is rounded to float before it is cut", {0, 7, 10}, {42, 255, 10}, 42},
      {"the same below zero", {13, 4, 14}, {306, 182, 14}, -54},
      {"float sums fall short of whole degrees", {1, 12, 0}, {124, 255, 12}, 124},
      {"in the blue sector too", {12, 10, 0}, {189, 255, 12}, 189},
  };
  for (const Case& c : cases) {
    unsigned int wrapped[3];
    int plain[3];
    bgr2hsv_pixel(c.bgr[0], c.bgr[1], c.bgr[2], wrapped);
    bgr2hsv_pixel_v2(c.bgr[0], c.bgr[1], c.bgr[2], plain);
    EXPECT_EQ(
        (Triple{static_cast<int>(wrapped[0]), static_cast<int>(wrapped[1]), static_cast<int>(wrapped[2])}),
        c.wrapped)
        << c.why;
    EXPECT_EQ((Triple{plain[0], plain[1], plain[2]}), (Triple{c.signed_hue, c.wrapped[1], c.wrapped[2]}))
        << c.why;
  }
}

TEST(Hsv, ValueIsTheLargestChannel) {
  for (int v = 0; v < 256; ++v) {
    int hsv[3];
    bgr2hsv_pixel_v2(v / 2, v, v / 3, hsv);
    EXPECT_EQ(hsv[2], v);
  }
}

TEST(Hsv, ImagesAreConvertedInEveryColumn) {
  // Two rows of five: a group of four and a single pixel in each.
  const std::array<float, 3> blue{252.0f, 255.0f, 255.0f}, magenta{312.941176f, 255.0f, 255.0f},
      grey{0.0f, 0.0f, 100.0f}, brown{30.0f, 170.0f, 30.0f}, green{100.0f, 191.25f, 200.0f};
  const std::array<float, 3> expected[] = {blue,  magenta, grey,    brown, green,
                                           green, blue,    magenta, grey,  brown};
  const unsigned char blue_in[] = {255, 0, 51}, magenta_in[] = {200, 0, 255}, grey_in[] = {100, 100, 100},
                      brown_in[] = {10, 20, 30}, green_in[] = {50, 200, 100};
  std::vector<unsigned char> bgr;
  for (const auto* pixel :
       {blue_in, magenta_in, grey_in, brown_in, green_in, green_in, blue_in, magenta_in, grey_in, brown_in})
    bgr.insert(bgr.end(), pixel, pixel + 3);
  std::vector<float> hsv(31, -1.0f);
  EXPECT_EQ(BGR2HSV(bgr.data(), hsv.data(), 5, 2), 0);
  for (std::size_t i = 0; i < 10; ++i)
    for (std::size_t channel = 0; channel < 3; ++channel)
      EXPECT_NEAR(hsv[3 * i + channel], expected[i][channel], 0.001f)
          << "pixel " << i << " channel " << channel;
  EXPECT_EQ(hsv[30], -1.0f);
  hsv.assign(4, -1.0f);
  EXPECT_EQ(BGR2HSV(bgr.data(), hsv.data(), 1, 1), 0);
  EXPECT_NEAR(hsv[0], 252.0f, 0.001f);
  EXPECT_EQ(hsv[3], -1.0f);
  for (const auto& [width, height] : {std::pair{5, 0}, std::pair{0, 2}, std::pair{-1, 2}}) {
    hsv.assign(31, -1.0f);
    EXPECT_EQ(BGR2HSV(bgr.data(), hsv.data(), width, height), 0);
    EXPECT_EQ(hsv, std::vector<float>(31, -1.0f));
  }
}

TEST(Regions, LargerComesFirst) {
  EXPECT_TRUE(cmp({5, 1}, {4, 2}));
  EXPECT_FALSE(cmp({4, 1}, {4, 2}));
  EXPECT_FALSE(cmp({-1, 1}, {0, 2}));
  PersonMeta large{}, small{};
  large.skinRatio = -1;  // compared unsigned: the largest of all
  small.skinRatio = 1000;
  EXPECT_TRUE(cmp_m(large, small));
  EXPECT_FALSE(cmp_m(small, large));
  EXPECT_FALSE(cmp_m(small, small));
}

}  // namespace
