/// DL_FD_Calc: face mask, growing, labelling, selection, human ratio.
#include "fakes/core_fixture.h"

namespace {

using Box = std::array<int32_t, 4>;

class FaceFusion : public CoreFixture {
 public:
  FaceFusion() {
    start(16);
    core_.segFactor = 48;
    canvas(256, 192);
  }

  /// Empty planes: label 0 wins everywhere.
  void canvas(int width, int height) {
    width_ = width;
    height_ = height;
    const auto pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    for (auto& plane : planes_) plane.assign(pixels, 0);
    planes_[0].assign(pixels, 100);
    luma_.assign(pixels, 0);
    rgb_.assign(pixels * 3, 0);
  }

  FaceFusion& paint(int x, int y, int w, int h, Scores scores = {0, 0, 250, 0, 0}) {
    for (int row = y; row < y + h; ++row)
      for (int column = x; column < x + w; ++column)
        for (std::size_t label = 0; label < 5; ++label)
          planes_[label].at(static_cast<std::size_t>(row * width_ + column)) = scores[label];
    return *this;
  }

  /// Paints face pixels so that the grown region is `columns` + 1 columns wide from column x on, in a strip
  /// of two rows: its box area is `columns`.
  FaceFusion& region(int x, int columns) { return paint(x + 8, 0, columns - 14, 1); }

  void fuse(float scale = 1.0f) {
    core_.scaleRatio = scale;
    core_.DL_FD_Calc(planes_[0].data(), planes_[1].data(), planes_[2].data(), planes_[3].data(),
                     planes_[4].data(), luma_.data(), rgb_.data(), width_, height_, 0);
  }

  std::vector<Box> boxes() const {
    std::vector<Box> result;
    for (int i = 0; i < core_.personCount && i < 5; ++i) {
      const FaceRect& r = core_.personBoxes[i];
      result.push_back({r.x, r.y, r.w, r.h});
    }
    return result;
  }

  int width_ = 0, height_ = 0;
  std::array<std::vector<uint8_t>, 5> planes_;
  std::vector<uint8_t> luma_, rgb_;
};

TEST_F(FaceFusion, AFacePixelWinsOutrightWithAScoreOf200) {
  struct Case {
    Scores scores;
    int faces;
  };
  const Case cases[] = {
      {{0, 0, 200, 0, 0}, 1},         {{0, 0, 199, 0, 0}, 0},    {{0, 0, 0, 200, 0}, 1},
      {{0, 0, 0, 199, 0}, 0},         {{0, 0, 220, 220, 0}, 0},  {{220, 0, 220, 0, 0}, 0},
      {{0, 220, 220, 0, 0}, 0},       {{0, 0, 220, 0, 220}, 0},  {{0, 0, 0, 220, 220}, 0},
      {{0, 220, 0, 220, 0}, 0},       {{220, 0, 0, 220, 0}, 0},  {{219, 219, 220, 219, 219}, 1},
      {{219, 219, 219, 220, 219}, 1}, {{250, 0, 220, 210, 0}, 0}};
  for (const Case& c : cases) {
    canvas(256, 192);
    paint(100, 100, 40, 30, c.scores).fuse();
    EXPECT_EQ(core_.personCount, c.faces) << testing::PrintToString(c.scores);
  }
}

// A region pixel has a face pixel 7 rows above to 8 rows below it, 7 columns to the left to 8 to the right.
// In the first nine rows and columns it does not look below or to the right, but back to the border.
TEST_F(FaceFusion, RegionsGrowUnevenly) {
  struct Case {
    const char* why;
    int x, y, w, h;
    Box box;
  };
  const Case cases[] = {{"inside", 100, 100, 40, 30, {92, 92, 54, 44}},
                        {"row 10 is seen from row 9, not from row 2", 100, 10, 40, 31, {92, 9, 54, 38}},
                        {"row 4 is seen from row 4", 100, 4, 40, 37, {92, 4, 54, 43}},
                        {"rows 0 and 1 are seen up to row 8", 100, 0, 40, 2, {92, 0, 54, 8}},
                        {"row 2 is seen from row 9 too", 100, 0, 40, 3, {92, 0, 54, 9}},
                        {"column 10 is seen from column 9", 10, 100, 31, 30, {9, 92, 38, 44}},
                        {"columns 0 and 1 are seen up to column 8", 0, 100, 2, 30, {0, 92, 8, 44}},
                        {"the last row and column end the window", 230, 180, 26, 12, {222, 172, 33, 19}}};
  for (const Case& c : cases) {
    canvas(256, 192);
    paint(c.x, c.y, c.w, c.h).fuse();
    EXPECT_EQ(boxes(), std::vector<Box>{c.box}) << c.why;
  }
  // A map of 17 rows never looks below; one of 18 does from its second half on.
  canvas(256, 17);
  paint(100, 12, 40, 1).fuse();
  EXPECT_EQ(boxes(), (std::vector<Box>{{92, 12, 54, 4}}));
  canvas(256, 18);
  paint(100, 12, 40, 1).fuse();
  EXPECT_EQ(boxes(), (std::vector<Box>{{92, 9, 54, 8}}));
}

TEST_F(FaceFusion, BoxesAreScaledAndCutToFramePixels) {
  paint(100, 100, 40, 30).fuse(4.21875f);
  EXPECT_EQ(boxes(), (std::vector<Box>{{388, 388, 227, 185}}));
}

TEST_F(FaceFusion, SmallRegionsAreNoFaces) {
  canvas(1200, 2);
  region(20, 100).fuse();
  EXPECT_EQ(core_.personCount, 0);
  canvas(1200, 2);
  region(20, 101).fuse();
  EXPECT_EQ(boxes(), (std::vector<Box>{{20, 0, 101, 1}}));
  // One pixel high or wide: no area at all.
  canvas(1200, 1);
  paint(100, 0, 500, 1).fuse();
  EXPECT_EQ(core_.personCount, 0);
  canvas(1, 1200);
  paint(0, 100, 1, 500).fuse();
  EXPECT_EQ(core_.personCount, 0);
}

TEST_F(FaceFusion, FacesExceedAnEighthOfTheLargest) {
  struct Case {
    int first, second, faces;
  };
  for (const Case& c : {Case{101, 808, 1}, Case{102, 808, 2}, Case{102, 815, 2}, Case{102, 816, 1}}) {
    canvas(1200, 2);
    region(20, c.first).region(300, c.second).fuse();
    EXPECT_EQ(core_.personCount, c.faces) << c.first << " beside " << c.second;
    EXPECT_EQ(core_.personBoxes[0].x, 300);
  }
}

TEST_F(FaceFusion, TheFiveLargestAreKeptLargestFirst) {
  canvas(2000, 2);
  core_.personBoxes[4] = {1, 2, 3, 4};
  region(20, 203).region(300, 201).fuse();
  EXPECT_EQ(boxes(), (std::vector<Box>{{20, 0, 203, 1}, {300, 0, 201, 1}}));
  EXPECT_EQ(core_.personBoxes[4].h, 4);  // slots that are not filled keep what they held
  region(600, 205).region(900, 200).region(1200, 204).region(1500, 202).fuse();
  EXPECT_EQ(boxes(),
            (std::vector<Box>{
                {600, 0, 205, 1}, {1200, 0, 204, 1}, {20, 0, 203, 1}, {1500, 0, 202, 1}, {300, 0, 201, 1}}));
}

// More of them than a sort would leave in order by itself. Those of the first row reach the border and are
// smaller.
TEST_F(FaceFusion, FacesOfOneSizeComeFromTopToBottom) {
  for (int row = 0; row < 4; ++row)
    for (int column = 0; column < 6; ++column) paint(10 + 40 * column, 10 + 40 * row, 10, 10);
  fuse();
  EXPECT_EQ(
      boxes(),
      (std::vector<Box>{
          {42, 42, 24, 24}, {82, 42, 24, 24}, {122, 42, 24, 24}, {162, 42, 24, 24}, {202, 42, 24, 24}}));
}

// A frame open to the right with an island in it: meeting the island from the left, it takes the island's
// right edge 107 and forgets its own, 207; the bottom bar then extends it to 117.
TEST_F(FaceFusion, AMergeTakesTheUpperRegionsRightEdge) {
  paint(20, 20, 181, 1).paint(20, 20, 1, 101).paint(100, 70, 1, 1).paint(20, 86, 91, 1).fuse();
  EXPECT_EQ(boxes(), (std::vector<Box>{{12, 12, 105, 115}}));
}

// Labels are bytes. After 255 regions the next one is number 256, whose byte reads "no region": the big
// region's first pixel starts it, the second pixel starts 255 anew; in the next row the first pixel is 256
// again, and only in the third does the counter fall back to 255 and hold the region together. So it begins
// two rows late.
TEST_F(FaceFusion, TheRegionAfterNumber255BeginsTwoRowsLate) {
  for (const auto& [islands, top] : {std::pair{254, 592}, std::pair{255, 594}}) {
    canvas(1024, 1024);
    for (int i = 0; i < islands; ++i) paint(24 + 32 * (i % 30), 24 + 32 * (i / 30), 1, 1);
    paint(300, 600, 100, 60).fuse();
    EXPECT_EQ(boxes(), (std::vector<Box>{{292, top, 114, 666 - top}})) << islands << " islands";
  }
}

// The share is formed in float: 53 / 100 * 100 is 52.999996. Label 3 takes no part; a tie with label 0
// counts.
TEST_F(FaceFusion, HumanRatioIsTheShareThatLabel0DoesNotWin) {
  canvas(100, 10);
  paint(0, 0, 100, 5, {100, 100, 0, 0, 0}).paint(0, 5, 30, 1, {100, 0, 0, 0, 101});
  paint(0, 6, 100, 4, {100, 0, 99, 250, 99}).fuse();
  EXPECT_EQ(core_.result.humanRatio, 52);
  paint(30, 5, 1, 1, {100, 0, 100, 0, 0}).fuse();
  EXPECT_EQ(core_.result.humanRatio, 53);
  for (const int height : {0, -1, -10}) {
    core_.result.humanRatio = core_.personCount = 4;
    height_ = height;
    fuse();
    EXPECT_EQ(core_.result.humanRatio, 0);
    EXPECT_EQ(core_.personCount, 0);
  }
}

TEST_F(FaceFusion, WithoutASegmentedFaceTheCamerasFacesAreMeasured) {
  record_.faceCount = 2;
  record_.faces[0] = record_.faces[1] = {10, 10, 20, 20};
  fuse();
  EXPECT_EQ(core_.personCount, 0);
  EXPECT_EQ(core_.result.ver, 2);
}

}  // namespace
