/// Scaling of planes that end somewhere: what lies past the end is not read, the last sample stands in.
#include "imgproc/scale_nv21.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "fakes/guarded_bytes.h"

namespace {

using namespace guarded;

/// Frames of one column have a chroma byte or none, which is no pair. Enlarged twice both rules meet them:
/// 0.5 is a half ratio, 0.4 is not.
TEST(ScaleNV21, AChromaPlaneWithoutAPairIsLeftAlone) {
  struct Size {
    int width, height, to_width, to_height;
  };
  for (const auto& [width, height, to_width, to_height] :
       {Size{1, 2, 2, 4}, {1, 3, 2, 6}, {1, 2, 5, 5}, {1, 3, 5, 5}, {1, 1, 2, 2}}) {
    SCOPED_TRACE(size_text(width, height));
    const auto luma_bytes = static_cast<size_t>(width * height),
               chroma_bytes = static_cast<size_t>(height / 2);
    GuardedBytes luma(Bytes(luma_bytes, 9), Edge::kBack), chroma(Bytes(chroma_bytes, 200), Edge::kBack);
    const auto pixels = static_cast<size_t>(to_width * to_height);
    Bytes expected(2 * pixels, 7);
    std::fill_n(expected.begin(), pixels, uint8_t{9});
    CanaryBytes to(Bytes(2 * pixels, 7));
    morvale::scale_nv21({luma.data(), width, luma.data() + luma_bytes},
                        {chroma.data(), width, chroma.data() + chroma_bytes}, to.data(), width, height,
                        to_width, to_height);
    expect_same(expected, to.bytes(), static_cast<size_t>(to_width), "scale_nv21");
  }
}

/// 5:2 in both directions asks a plane of ten rows for its ninth, and here there are eight: the eighth stands
/// in. Rows of 16 runs, so that the vector loops meet the end too.
TEST(ScaleNV21, PastTheEndTheLastRowStandsIn) {
  constexpr int kWidth = 80, kRows = 8, kToWidth = 32, kToRows = 4;
  const Bytes plane = random_bytes(kWidth * kRows, 3);
  Bytes longer = plane;
  for (int i = 0; i < 2; ++i) longer.insert(longer.end(), plane.end() - kWidth, plane.end());
  const auto scaled = [&](const Bytes& from, const uint8_t* end) {
    CanaryBytes to(Bytes(kToWidth * kToRows * 3 / 2));
    morvale::scale_nv21({from.data(), kWidth, end}, {from.data(), kWidth, end}, to.data(), kWidth, 10,
                        kToWidth, kToRows);
    return Bytes(to.bytes().begin(), to.bytes().end());
  };
  EXPECT_EQ(scaled(longer, nullptr), scaled(plane, plane.data() + plane.size()));
}

}  // namespace
