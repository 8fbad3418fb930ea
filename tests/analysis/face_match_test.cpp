/// Intersection_Calc: which rectangle is measured for each face.
#include <climits>
#include <cstring>

#include "fakes/core_fixture.h"

namespace {

/// Columns and rows of the map that a measurement visited: left..right-1, top..bottom-1.
using Visited = std::array<int, 4>;
constexpr Visited kNothing{0, 0, 0, 0};

class FaceMatch : public CoreFixture {
 protected:
  static constexpr int kWidth = 160, kHeight = 200;

  FaceMatch() : scores_(kPixels, 60), luma_(kPixels, 255), mask_(kPixels), rgb_(kPixels * 3) {
    start(16);
    core_.segFactor = 48;
    core_.scaleRatio = 1.0f;
    record_.width = kWidth;
    record_.height = kHeight;
  }

  void faces(std::vector<FaceRect> list) {
    record_.faceCount = static_cast<int32_t>(list.size());
    std::copy(list.begin(), list.end(), record_.faces);
  }
  void boxes(std::vector<FaceRect> list) {
    core_.personCount = static_cast<int32_t>(list.size());
    std::copy(list.begin(), list.end(), core_.personBoxes);
  }

  void match() {
    core_.Intersection_Calc(scores_.data(), luma_.data(), rgb_.data(), mask_.data(), kWidth, kHeight);
  }

  /// Measures with a mask of one column, then of one row at a time: a face's bright pixels tell whether it
  /// was visited.
  Visited visited(int face) {
    Visited edges = kNothing;
    for (int axis = 0; axis < 2; ++axis) {
      bool seen = false;
      for (int i = 0; i < (axis == 0 ? kWidth : kHeight); ++i) {
        mark(axis, i, 1);
        core_.result.meta[face].brightCount[0] = 0;
        match();
        mark(axis, i, 0);
        if (core_.result.meta[face].brightCount[0] == 0) continue;
        if (!seen) edges[axis == 0 ? 0 : 2] = i;
        edges[axis == 0 ? 1 : 3] = i + 1;
        seen = true;
      }
    }
    forget();
    return edges;
  }

  /// How often it was logged that there are more than three faces.
  long overflows() const {
    const std::vector<std::string> log = lines(fakes::kDebug);
    return std::count(log.begin(), log.end(), "Morvale interSection Over.");
  }

  /// Sets the mask of column (axis 0) or row (axis 1) i.
  void mark(int axis, int i, uint8_t value) {
    for (int j = 0; j < (axis == 0 ? kHeight : kWidth); ++j)
      mask_[static_cast<std::size_t>(axis == 0 ? j * kWidth + i : i * kWidth + j)] = value;
  }

  static constexpr std::size_t kPixels = kWidth * kHeight;
  std::vector<uint8_t> scores_, luma_, mask_, rgb_;
};

TEST_F(FaceMatch, AFrameWidthAtTheEndOfItsTypeClipsTheFaceAway) {
  record_.width = INT_MIN;
  boxes({{180, 180, 67, 67}});
  faces({{164, 164, 99, 99}});
  match();
  EXPECT_EQ(core_.result.ver, 1);
  EXPECT_EQ(visited(0), kNothing);
}

TEST_F(FaceMatch, WithoutBoxesEveryCameraFaceIsTaken) {
  std::memset(static_cast<void*>(&core_.result), 0x11, sizeof core_.result);
  match();
  EXPECT_EQ(core_.result.ver, 0);
  EXPECT_EQ(core_.result.meta[0].skinRatio, 0x11111111);
  faces({{10, 12, 21, 9}, {0, 0, 5, 5}, {50, 60, 11, 31}, {1, 1, 9, 9}});
  EXPECT_EQ(visited(0), (Visited{10, 30, 12, 20}));
  EXPECT_EQ(visited(2), (Visited{50, 60, 60, 90}));
  EXPECT_EQ(core_.result.ver, 4);
  EXPECT_EQ(core_.result.meta[3].skinRatio, 0x11111111);
}

TEST_F(FaceMatch, RectanglesAreScaledCutAndClamped) {
  struct Case {
    const char* why;
    float scale;
    FaceRect face;
    Visited visited;
  };
  const Case cases[] = {{"each edge is divided on its own", 2.0f, {11, 13, 20, 10}, {5, 15, 6, 11}},
                        {"15.625 frame pixels a map pixel", 15.625f, {1000, 812, 500, 500}, {64, 95, 51, 83}},
                        {"left and above the frame", 2.0f, {-7, -9, 30, 30}, {0, 11, 0, 10}},
                        {"right and below", 1.0f, {100, 150, 500, 500}, {100, 159, 150, 199}},
                        {"outside", 1.0f, {500, 10, 20, 20}, kNothing},
                        {"empty", 1.0f, {20, 20, 0, 0}, kNothing},
                        {"the sum leaves 32 bits", 1.0f, {5, 6, INT_MAX, INT_MAX}, {5, 159, 6, 199}},
                        {"both ends", 1.0f, {INT_MAX, INT_MAX, INT_MAX, INT_MAX}, kNothing},
                        {"both other ends", 1.0f, {INT_MIN, INT_MIN, INT_MIN, INT_MIN}, kNothing}};
  for (const Case& c : cases) {
    core_.scaleRatio = c.scale;
    faces({c.face});
    EXPECT_EQ(visited(0), c.visited) << c.why;
  }
}

TEST_F(FaceMatch, ABoxWithOneFaceChoosesARectangle) {
  struct Case {
    const char* why;
    FaceRect face, box;
    Visited visited;
    int width = kWidth, height = kHeight;
  };
  const Case cases[] = {
      {"no match: the box", {100, 100, 40, 40}, {20, 10, 41, 31}, {20, 60, 10, 40}},
      // A face of 30 x 20 at (20, 10) has a margin of 5: its inner part is 25..44 x 15..24.
      {"the inner part just fits: face, for the box is less than half",
       {20, 10, 30, 20},
       {25, 15, 20, 10},
       {20, 49, 10, 29}},
      {"not on the left", {20, 10, 30, 20}, {26, 15, 19, 10}, {26, 44, 15, 24}},
      {"not above", {20, 10, 30, 20}, {25, 16, 20, 9}, {25, 44, 16, 24}},
      {"not on the right", {20, 10, 30, 20}, {25, 15, 19, 10}, {25, 43, 15, 24}},
      {"not below", {20, 10, 30, 20}, {25, 15, 20, 9}, {25, 44, 15, 23}},
      {"twice the box is the face: the box", {0, 0, 61, 61}, {10, 10, 41, 46}, {10, 50, 10, 55}},
      {"twice the box is less: the face", {0, 0, 61, 61}, {10, 10, 41, 45}, {0, 60, 0, 60}},
      {"the face is clipped right and, by the width too, below",
       {10, 60, 90, 90},
       {25, 75, 60, 60},
       {10, 95, 60, 95},
       96,
       200},
      {"clipping below leaves what lies above the width",
       {10, 10, 90, 90},
       {25, 25, 60, 60},
       {10, 99, 10, 99},
       120,
       50},
      {"one and a half times the face: the box", {40, 30, 21, 21}, {38, 30, 31, 21}, {38, 68, 30, 50}},
      {"more: the face, a quarter wider on both sides", {40, 30, 21, 21}, {38, 30, 32, 21}, {35, 65, 30, 50}},
      {"by no more than the gap on the right", {40, 30, 21, 21}, {30, 30, 33, 21}, {38, 62, 30, 50}},
      {"within the frame's width", {40, 30, 21, 21}, {38, 30, 32, 21}, {35, 62, 30, 50}, 63, 200},
      {"a quarter higher, within the frame's height",
       {40, 30, 21, 21},
       {40, 28, 21, 32},
       {40, 60, 25, 52},
       160,
       53},
      {"at the left edge nothing grows, right neither", {0, 30, 21, 21}, {0, 30, 32, 21}, {0, 20, 30, 50}},
      {"near the left edge the right grows as much as the left",
       {2, 30, 21, 21},
       {0, 30, 34, 21},
       {0, 24, 30, 50}}};
  for (const Case& c : cases) {
    record_.width = c.width;
    record_.height = c.height;
    faces({c.face});
    boxes({c.box});
    EXPECT_EQ(visited(0), c.visited) << c.why;
    EXPECT_EQ(core_.result.ver, 1);
  }
}

TEST_F(FaceMatch, ANarrowFaceHasNoMargin) {
  faces({{30, 30, 5, 20}, {30, 50, 5, 20}});
  boxes({{30, 30, 5, 40}});
  match();
  EXPECT_EQ(core_.result.ver, 2);
  boxes({{30, 30, 4, 40}});
  match();
  EXPECT_EQ(core_.result.ver, 1);
}

TEST_F(FaceMatch, FacesOfOneBoxAreTakenAsTheyAreUpToThree) {
  faces({{10, 10, 21, 21}, {40, 10, 31, 21}, {80, 10, 11, 21}, {10, 100, 21, 21}, {40, 100, 21, 21}});
  boxes({{5, 5, 100, 60}});
  EXPECT_EQ(visited(0), (Visited{10, 30, 10, 30}));
  EXPECT_EQ(visited(1), (Visited{40, 70, 10, 30}));
  EXPECT_EQ(visited(2), (Visited{80, 90, 10, 30}));
  match();
  EXPECT_EQ(core_.result.ver, 3);
  EXPECT_EQ(overflows(), 0);

  boxes({{5, 5, 100, 60}, {5, 95, 60, 60}});
  forget();
  match();
  EXPECT_EQ(core_.result.ver, 3);
  EXPECT_EQ(overflows(), 2);
}

TEST_F(FaceMatch, FacesInTwoBoxesAreTakenTwice) {
  faces({{10, 10, 21, 21}, {40, 10, 31, 21}});
  boxes({{5, 5, 100, 60}, {6, 6, 100, 60}});
  EXPECT_EQ(visited(2), (Visited{10, 30, 10, 30}));
  EXPECT_EQ(core_.result.ver, 3);
}

TEST_F(FaceMatch, BoxesAfterTheThirdFaceAreSkippedInSilence) {
  boxes({{10, 10, 21, 21}, {40, 10, 31, 21}, {80, 10, 11, 21}, {10, 100, 21, 21}, {40, 100, 21, 21}});
  EXPECT_EQ(visited(2), (Visited{80, 90, 10, 30}));
  EXPECT_EQ(core_.result.ver, 3);
  forget();
  match();
  EXPECT_EQ(overflows(), 0);
}

}  // namespace
