/// What of a record may be read and painted, at the ends of the sizes: no picture is that large.
#include <gtest/gtest.h>

#include <climits>
#include <utility>

#include "core/frame.h"
#include "fakes/luma_planes.h"

namespace {

using namespace morvale;

TEST(Frame, TheLumaPlaneHasRowsOfItsStrideOrOfItsWidth) {
  uint8_t plane = 0;
  for (const auto& c : kLumaPlanes) {
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
  struct Case {
    int width, height;
    bool usable;
  };
  const Case cases[] = {{1, 1, true},
                        {0, 1, false},
                        {1, 0, false},
                        {kSideEnd - 1, 1, true},
                        {kSideEnd, 1, false},
                        {1, kSideEnd - 1, true},
                        {1, kSideEnd, false},
                        {32768, 43690, true},
                        {32768, 43692, false},
                        {kSideEnd - 1, 170, true},
                        {kSideEnd - 1, 171, true},
                        {kSideEnd - 1, 172, false}};
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
