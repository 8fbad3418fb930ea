/// What of a record may be read and painted, at the ends of the sizes: no picture is that large.
#include <gtest/gtest.h>

#include <climits>
#include <utility>

#include "core/frame.h"

namespace {

using namespace morvale;

TEST(Frame, TheLumaPlaneHasRowsOfItsStrideOrOfItsWidth) {
  struct Case {
    int width, height, stride;
    int64_t bytes;
  };
  constexpr int kSide = 1 << 23;
  const Case cases[] = {{256, 64, 0, 256 * 64},
                        {256, 64, 255, 256 * 64},
                        {256, 64, 257, 257 * 64},
                        {1, 1, 0, 1},
                        {256, 0, 256, 0},
                        {256, 1, 300, 300},
                        {0, 4, 0, 0},
                        {0, 4, 1, 4},
                        {-5, 4, -5, 0},
                        {256, 4, kSide - 1, 4 * (kSide - 1)},
                        {256, 4, kSide, 256 * 4},
                        {256, 4, INT_MAX, 256 * 4},
                        {kSide - 1, 1, 0, kSide - 1},
                        {kSide, 1, 0, 0},
                        {256, kSide - 1, 0, 256 * int64_t{kSide - 1}},
                        {1, kSide, 0, 0},
                        {257, kSide - 1, 0, 0},  // 2^31 bytes and more
                        {200, kSide / 2, 512, 200 * int64_t{kSide / 2}}};
  uint8_t plane = 0;
  for (const Case& c : cases) {
    MorvaleData_t record{};
    record.yPlane = &plane;
    record.width = c.width;
    record.height = c.height;
    record.stride = c.stride;
    EXPECT_EQ(luma_plane_bytes(record), c.bytes) << c.width << "x" << c.height << ", stride " << c.stride;
    record.yPlane = nullptr;
    EXPECT_EQ(luma_plane_bytes(record), 0);
  }
}

TEST(Frame, SizesWhoseBytesOrPositionsLeaveInt32AreUnusable) {
  constexpr int kSide = 1 << 23;
  struct Case {
    int width, height;
    bool usable;
  };
  const Case cases[] = {{1, 1, true},           {0, 1, false},          {1, 0, false},
                        {kSide - 1, 1, true},   {kSide, 1, false},      {1, kSide - 1, true},
                        {1, kSide, false},      {32768, 43690, true},   {32768, 43692, false},
                        {kSide - 1, 170, true}, {kSide - 1, 171, true}, {kSide - 1, 172, false}};
  uint8_t luma = 0, chroma = 0;
  for (const Case& c : cases) {
    MorvaleData_t record{};
    record.yPlane = &luma;
    record.uvPlane = &chroma;
    record.width = c.width;
    record.height = c.height;
    EXPECT_EQ(usable_frame(record).has_value(), c.usable) << c.width << "x" << c.height;
  }

  // Where the stride finds the chroma, it may lead to the last byte that int32 counts and no further.
  MorvaleData_t record{};
  record.yPlane = record.uvPlane = &luma;
  record.width = record.height = 1;
  for (const auto& [stride, usable] : {std::pair{INT_MAX, true}, {0, true}, {-1, false}}) {
    record.stride = stride;
    EXPECT_EQ(usable_frame(record).has_value(), usable) << stride;
  }
  record.width = record.height = 2;
  record.stride = INT_MAX / 2;
  EXPECT_FALSE(usable_frame(record).has_value());
}

}  // namespace
