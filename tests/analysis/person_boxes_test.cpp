/// DL_Human_Calc with its drawings, and argMax_6label: what callers with a six-label model of their own use.
#include <algorithm>
#include <array>
#include <climits>
#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <sstream>

#include "fakes/core_fixture.h"
#include "fakes/guarded_bytes.h"

namespace {

using guarded::Bytes;
using guarded::Edge;
using guarded::GuardedBytes;

using Box = std::array<int32_t, 4>;
using Scores6 = std::array<uint8_t, 6>;
using Boxes = std::vector<Box>;

constexpr Scores6 kPerson{0, 200, 0, 0, 0, 0};
constexpr Scores6 kFace{0, 0, 200, 0, 0, 0};

Box box_of(const FaceRect& r) { return {r.x, r.y, r.w, r.h}; }

/// Rows of a picture by number: '.' untouched, '#' black, 'o' white. Rows and row ends not given: untouched.
using Picture = std::map<int, std::string>;

class PersonBoxes : public CoreFixture {
 public:
  PersonBoxes() {
    start(16);
    core_.scaleRatio = 1.0f;
    frame(12, 8);
    canvas(256, 192);
  }

  /// Empty planes: label 0 wins everywhere.
  void canvas(int width, int height) {
    width_ = width;
    const auto pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
    height_ = height;
    for (auto& plane : planes_) plane.assign(pixels, 0);
    planes_[0].assign(pixels, 100);
    mask_.assign(pixels, 77);
  }

  PersonBoxes& paint(int x, int y, int w, int h, Scores6 scores = kPerson) {
    for (int row = y; row < y + h; ++row)
      for (int column = x; column < x + w; ++column)
        for (std::size_t label = 0; label < 6; ++label)
          planes_[label].at(static_cast<std::size_t>(row * width_ + column)) = scores[label];
    return *this;
  }

  /// Makes a region `columns` + 1 columns wide from column x on, in a canvas of two rows: its area is
  /// `columns`.
  PersonBoxes& region(int x, int columns, Scores6 scores = kPerson) {
    return paint(x + 8, 0, columns - 14, 1, scores);
  }

  void find(int k = 1) {
    core_.DL_Human_Calc(planes_[0].data(), planes_[1].data(), planes_[2].data(), planes_[3].data(),
                        planes_[4].data(), planes_[5].data(), nullptr, nullptr, mask_.data(), width_, height_,
                        k);
  }

  /// The caller's luma plane, all 50, of exactly `height` rows of the stride, beside forbidden memory.
  void frame(int width, int height, int stride = 0, Edge edge = Edge::kBack) {
    record_.width = width;
    record_.height = height;
    record_.stride = stride;
    row_bytes_ = static_cast<std::size_t>(stride == 0 ? width : stride);
    luma_ = std::make_unique<GuardedBytes>(Bytes(row_bytes_ * static_cast<std::size_t>(height), 50), edge);
    record_.yPlane = record_.uvPlane = luma_->data();
  }

  void expect_drawn(const Picture& rows) {
    for (std::size_t y = 0; y < luma_->bytes().size() / row_bytes_; ++y) {
      std::string drawn;
      for (const uint8_t pixel : luma_->bytes().subspan(y * row_bytes_, row_bytes_))
        drawn += pixel == 50 ? '.' : pixel == 0 ? '#' : pixel == 255 ? 'o' : '?';
      const auto row = rows.find(static_cast<int>(y));
      std::string expected = row == rows.end() ? "" : row->second;
      expected.resize(row_bytes_, '.');
      EXPECT_EQ(drawn, expected) << "row " << y;
    }
  }

  Boxes boxes() const {
    Boxes result;
    for (int i = 0; i < core_.personCount && i < 5; ++i) result.push_back(box_of(core_.personBoxes[i]));
    return result;
  }
  Box reported() const { return std::to_array(core_.result.meta[0].box); }

  int width_ = 0, height_ = 0;
  std::size_t row_bytes_ = 0;
  std::array<Bytes, 6> planes_;
  Bytes mask_;
  std::unique_ptr<GuardedBytes> luma_;
};

TEST_F(PersonBoxes, APersonPixelHasALabelAboveLabels0And5) {
  struct Case {
    Scores6 scores;
    int mask;
  };
  const Case cases[] = {
      {{100, 100, 0, 0, 0, 0}, 0}, {{100, 101, 0, 0, 0, 0}, 1},  {{100, 0, 101, 0, 0, 0}, 1},
      {{100, 0, 0, 101, 0, 0}, 1}, {{100, 0, 0, 0, 101, 0}, 1},  {{100, 0, 0, 0, 0, 200}, 0},
      {{0, 0, 0, 0, 100, 100}, 0}, {{0, 0, 0, 0, 101, 100}, 1},  {{50, 60, 0, 0, 0, 55}, 1},
      {{60, 65, 0, 0, 70, 70}, 0}, {{60, 65, 0, 0, 75, 70}, 1},  {{0, 0, 0, 0, 0, 0}, 0},
      {{0, 0, 90, 90, 0, 0}, 1},   {{254, 255, 0, 0, 0, 254}, 1}};
  canvas(static_cast<int>(std::size(cases)), 1);
  for (int i = 0; i < width_; ++i) paint(i, 0, 1, 1, cases[i].scores);
  find();
  for (std::size_t i = 0; i < mask_.size(); ++i)
    EXPECT_EQ(int{mask_[i]}, cases[i].mask) << testing::PrintToString(cases[i].scores);
}

// A face pixel is a person pixel too, so a block of faces counts twice. There is no least score.
TEST_F(PersonBoxes, AFacePixelIsWonOutrightByLabel2Or3) {
  struct Case {
    Scores6 scores;
    int count;
  };
  const Case cases[] = {{{0, 0, 1, 0, 0, 0}, 2},
                        {{0, 0, 0, 1, 0, 0}, 2},
                        {{219, 219, 220, 219, 219, 219}, 2},
                        {{219, 219, 219, 220, 219, 219}, 2},
                        {{0, 0, 220, 220, 0, 0}, 1},
                        {{0, 220, 220, 0, 0, 0}, 1},
                        {{0, 0, 220, 0, 220, 0}, 1},
                        {{0, 220, 0, 220, 0, 0}, 1},
                        {{0, 0, 0, 220, 220, 0}, 1},
                        {{220, 0, 220, 0, 0, 0}, 0},
                        {{220, 0, 0, 220, 0, 0}, 0},
                        {{0, 0, 220, 0, 0, 220}, 0},
                        {{0, 0, 0, 220, 0, 220}, 0}};
  for (const Case& c : cases) {
    canvas(256, 192);
    paint(100, 100, 40, 30, c.scores).find();
    EXPECT_EQ(boxes(), Boxes(static_cast<std::size_t>(c.count), {92, 92, 54, 44}))
        << testing::PrintToString(c.scores);
  }
}

// The share is formed in float: 530 / 1000 * 100 is 52.999996. A tie with label 0 counts; labels 3 and 5 win
// pixels, but not for the share.
TEST_F(PersonBoxes, Labels3And5TakeNoPartInTheHumanShare) {
  canvas(100, 10);
  paint(0, 0, 100, 5, {100, 100, 0, 0, 0, 255}).paint(0, 5, 30, 1, {100, 0, 0, 0, 101, 0});
  paint(30, 5, 70, 3, {100, 99, 0, 250, 99, 0}).paint(0, 8, 100, 2, {100, 0, 99, 0, 0, 250}).find();
  EXPECT_EQ(core_.result.humanRatio, 52);
  paint(30, 5, 1, 1, {100, 0, 100, 0, 0, 0}).find();
  EXPECT_EQ(core_.result.humanRatio, 53);
}

TEST_F(PersonBoxes, OnePersonAndTheFourLargestFaces) {
  canvas(3000, 2);
  region(10, 2900);
  const std::array<int, 5> faces = {203, 201, 205, 204, 202};
  for (int i = 0; i < 5; ++i) region(100 + 400 * i, faces[static_cast<std::size_t>(i)], kFace);
  std::fill_n(reinterpret_cast<uint8_t*>(&core_.result), sizeof core_.result, uint8_t{0x11});
  const PersonWholeMeta before = core_.result;
  find();
  EXPECT_EQ(core_.personCount, 5);
  EXPECT_EQ(
      boxes(),
      (Boxes{{10, 0, 2900, 1}, {900, 0, 205, 1}, {1300, 0, 204, 1}, {100, 0, 203, 1}, {1700, 0, 202, 1}}));
  // Of the record only the share and the person's box are written, the box as x, y, w, h.
  EXPECT_EQ(reported(), (Box{10, 0, 2900, 1}));
  EXPECT_EQ(core_.result.ver, before.ver);
  for (std::size_t word = 0; word < 10; ++word)
    EXPECT_EQ(words(core_.result.meta[0])[word], words(before.meta[0])[word]);
  for (int i = 1; i < 5; ++i) EXPECT_EQ(words(core_.result.meta[i]), words(before.meta[i]));
}

TEST_F(PersonBoxes, TheLargestPersonAloneIsTakenAndFacesExceedAnEighthOfTheLargest) {
  struct Case {
    int first, second;
    Boxes boxes;
  };
  const Case cases[] = {{100, 90, {}},
                        {101, 100, {{20, 0, 101, 1}, {20, 0, 101, 1}}},
                        {101, 808, {{300, 0, 808, 1}, {300, 0, 808, 1}}},
                        {102, 808, {{300, 0, 808, 1}, {300, 0, 808, 1}, {20, 0, 102, 1}}},
                        {102, 815, {{300, 0, 815, 1}, {300, 0, 815, 1}, {20, 0, 102, 1}}},
                        {102, 816, {{300, 0, 816, 1}, {300, 0, 816, 1}}}};
  for (const Case& c : cases) {
    canvas(1200, 2);
    region(20, c.first, kFace).region(300, c.second, kFace).find();
    EXPECT_EQ(boxes(), c.boxes) << c.first << " beside " << c.second;
  }
}

// Persons grow and merge by the rule of the front camera's faces: an uneven window that does not look ahead
// near the top, and a merge that takes the upper region's right edge.
TEST_F(PersonBoxes, PersonsGrowAndMergeLikeFaces) {
  paint(100, 4, 40, 37).find();
  EXPECT_EQ(boxes(), (Boxes{{92, 4, 54, 43}}));
  canvas(256, 192);
  paint(20, 20, 181, 1).paint(20, 20, 1, 101).paint(100, 70, 1, 1).paint(20, 86, 91, 1).find();
  EXPECT_EQ(boxes(), (Boxes{{12, 12, 105, 115}}));
}

// 31 * 0.7f is 21.699999 and ten times that 216.99999; 0.7f * 10 and 31 * 10 round otherwise: 217. In double
// the width would be 839.
TEST_F(PersonBoxes, BoxesAreScaledFirstAndMultipliedThen) {
  canvas(1200, 2);
  core_.scaleRatio = 0.7f;
  region(31, 120).find(10);
  EXPECT_EQ(boxes(), (Boxes{{216, 0, 840, 7}}));
  find(-10);
  EXPECT_EQ(boxes(), (Boxes{{-216, 0, -840, -7}}));
  find(0);
  EXPECT_EQ(boxes(), (Boxes{{0, 0, 0, 0}}));
  EXPECT_EQ(reported(), (Box{0, 0, 0, 0}));
}

TEST_F(PersonBoxes, ThePersonIsDrawnBlackTheFacesWhite) {
  frame(26, 25);
  canvas(256, 256);
  core_.scaleRatio = 0.125f;
  paint(40, 40, 150, 150).paint(48, 56, 50, 60, kFace).paint(128, 56, 40, 40, kFace).find();
  EXPECT_EQ(boxes(), (Boxes{{4, 4, 20, 20}, {5, 6, 8, 9}, {15, 6, 6, 6}}));
  Picture rows = {{4, "....###################"},   {5, "....###################"},
                  {6, "....#ooooooo...ooooo..##"},  {7, "....#ooooooo...ooooo..##"},
                  {8, "....#oo....oo..oo..oo.##"},  {9, "....#oo....oo..ooooo..##"},
                  {10, "....#oo....oo..ooooo..##"}, {11, "....#oo....oo.........##"},
                  {12, "....#ooooooo..........##"}, {13, "....#ooooooo..........##"}};
  for (int row = 14; row < 21; ++row) rows[row] = "....##................##";
  rows[21] = rows[22] = rows[4];
  expect_drawn(rows);
}

// Two columns short of the least area: no person, yet the box of an earlier frame is drawn and reported.
TEST_F(PersonBoxes, TooSmallAPersonLeavesTheFormerBox) {
  canvas(1200, 2);
  core_.personBoxes[0] = {3, 1, 6, 5};
  core_.personCount = 4;
  region(20, 100, kFace).region(300, 60).find();
  EXPECT_EQ(core_.personCount, 0);
  EXPECT_EQ(box_of(core_.personBoxes[0]), (Box{3, 1, 6, 5}));
  EXPECT_EQ(reported(), (Box{3, 1, 6, 5}));
  expect_drawn({{1, "...#####"}, {2, "...#####"}, {3, "...#####"}, {4, "...#####"}});
}

TEST_F(PersonBoxes, WithoutAPersonTheReportedBoxIsCleared) {
  for (const int height : {192, 0, -3}) {
    SCOPED_TRACE(height);
    height_ = height;
    core_.personBoxes[0] = {3, 1, 6, 5};
    core_.personCount = 4;
    core_.result.humanRatio = 9;
    std::fill_n(core_.result.meta[0].box, 4, 9);
    find();
    EXPECT_EQ(core_.personCount, 0);
    EXPECT_EQ(core_.result.humanRatio, 0);
    EXPECT_EQ(reported(), (Box{0, 0, 0, 0}));
    EXPECT_EQ(box_of(core_.personBoxes[0]), (Box{3, 1, 6, 5}));
    expect_drawn({});
  }
}

// A ring whose legs carry one label and whose bar, entered from the right leg, another: the bar's label takes
// in the left leg's, whose remains then take in the bar's. The person is lost, the faces in it are not. They
// fill the slots from 0 on; slot 0 is the person's and never drawn white, and black only when a region, be it
// too small, brings up the former box.
TEST_F(PersonBoxes, SlotZeroIsNeverDrawnWhite) {
  for (const bool small_region : {false, true}) {
    SCOPED_TRACE(small_region);
    frame(40, 32);
    canvas(256, 256);
    core_.scaleRatio = 0.25f;
    core_.personBoxes[0] = {1, 2, 5, 5};
    paint(60, 40, 101, 1).paint(60, 40, 1, 81).paint(160, 40, 1, 81).paint(120, 80, 41, 1);
    paint(60, 120, 101, 1).paint(70, 120, 21, 1, kFace).paint(110, 120, 26, 1, kFace);
    if (small_region) paint(255, 255, 1, 1);
    find();
    EXPECT_EQ(boxes(), (Boxes{{25, 28, 10, 3}, {15, 28, 8, 3}}));
    EXPECT_EQ(reported(), small_region ? (Box{1, 2, 5, 5}) : (Box{0, 0, 0, 0}));
    Picture rows = {{28, "...............ooooooo"}, {29, "...............ooooooo"}};
    if (small_region)
      for (int row = 2; row < 6; ++row) rows[row] = ".####";
    expect_drawn(rows);
  }
}

// Two full rows at the top, two at the bottom, ending before `right`; between them four pixels, the last of
// which is `right` itself. Columns and rows are limited at their far end alone. Pixels beside the picture are
// dropped.
TEST_F(PersonBoxes, OutlinesByHand) {
  struct Case {
    const char* why;
    std::array<int, 4> box;  // left, right, top, bottom
    int first_row;
    std::string rows;
    int stride = 0;
  };
  const Case cases[] = {
      {"a box", {2, 9, 1, 7}, 1, "..ooooooo ..ooooooo ..oo....oo ..oo....oo ..ooooooo ..ooooooo"},
      {"two rows", {1, 6, 3, 5}, 3, ".ooooo .ooooo"},
      {"one row", {1, 6, 3, 4}, 3, ".ooooo"},
      {"no row", {1, 6, 3, 3}, 0, ""},
      {"top below bottom", {1, 6, 5, 2}, 0, ""},
      {"no column: the four pixels of the inner rows", {6, 6, 1, 7}, 3, ".....ooo .....ooo"},
      {"left right of right", {8, 3, 1, 7}, 3, "..oo....oo ..oo....oo"},
      {"past the right edge",
       {8, 20, 2, 7},
       2,
       "........ooo ........ooo ........oooo ........ooo ........ooo"},
      {"all of it past the right edge", {30, 30, 2, 7}, 4, "..........oo"},
      {"only left past the right edge", {30, 5, 2, 7}, 4, "....oo.....o"},
      {"past the bottom: the last row stays", {2, 6, 4, 100}, 4, "..oooo ..oooo ..oooo"},
      {"all of it past the bottom", {2, 6, 9, 100}, 0, ""},
      {"above the plane", {2, 6, -2, 3}, 0, "..oo.oo ..oooo ..oooo"},
      {"left of the plane", {-2, 3, 0, 5}, 0, "ooo ooo ..oo ooo ooo"},
      {"a stride of the width", {1, 6, 3, 5}, 3, ".ooooo .ooooo", 12},
      {"padding is drawn into",
       {9, 40, 2, 7},
       2,
       ".........oooooo .........oooooo .........oo...oo .........oooooo .........oooooo",
       16}};
  for (const Case& c : cases)
    for (const Edge edge : guarded::kEdges) {
      SCOPED_TRACE(c.why);
      const auto [left, right, top, bottom] = c.box;
      Picture white, black;
      std::istringstream rows(c.rows);
      int y = c.first_row;
      for (std::string row; rows >> row; ++y) {
        white[y] = row;
        std::replace(row.begin(), row.end(), 'o', '#');
        black[y] = row;
      }
      frame(12, 8, c.stride, edge);
      core_.WriteFaceInfo_HW(nullptr, nullptr, left, right, top, bottom, 0);
      expect_drawn(white);
      frame(12, 8, c.stride, edge);
      core_.WriteFaceInfo_DL(nullptr, nullptr, left, right, top, bottom);
      expect_drawn(black);
    }
}

// Whatever is drawn, it stays inside the plane, and it comes to an end.
TEST_F(PersonBoxes, OutlinesAtTheEndsOfTheRangeStayInThePlane) {
  const int ends[] = {INT_MIN, INT_MIN + 1, -1, 0, 5, INT_MAX - 1, INT_MAX};
  for (const Edge edge : guarded::kEdges) {
    frame(12, 8, 16, edge);
    for (const int left : ends)
      for (const int right : ends)
        for (const int top : ends)
          for (const int bottom : ends) {
            core_.WriteFaceInfo_DL(nullptr, nullptr, left, right, top, bottom);
            core_.WriteFaceInfo_HW(nullptr, nullptr, left, right, top, bottom, INT_MIN);
          }
    frame(12, 8, 0, edge);
    canvas(1200, 2);
    region(20, 120, kFace);
    const float infinity = std::numeric_limits<float>::infinity();
    for (const float scale : {1e30f, -1e30f, infinity, -infinity, std::nanf("")})
      for (const int k : {INT_MIN, -1, 0, 1, INT_MAX}) {
        core_.scaleRatio = scale;
        find(k);
        EXPECT_EQ(core_.personCount, 2);
      }
  }
}

TEST_F(PersonBoxes, WithoutAPlaneNothingIsDrawn) {
  canvas(1200, 2);
  core_.personBoxes[0] = {1, 1, 6, 6};
  region(20, 100).find();
  frame(12, 8);
  const auto draw_all = [&] {
    core_.WriteFaceInfo_DL(nullptr, nullptr, 2, 9, 1, 7);
    core_.WriteFaceInfo_HW(nullptr, nullptr, 2, 9, 1, 7, 0);
    find();
  };
  const MorvaleData_t sound = record_;
  for (const int32_t size : {0, -1, INT_MIN}) {
    record_.width = size;
    draw_all();
    record_ = sound;
    record_.height = size;
    draw_all();
    record_ = sound;
    if (size < 0) record_.stride = size, draw_all();
    record_ = sound;
  }
  expect_drawn({});
  record_.yPlane = nullptr;
  draw_all();
  EXPECT_EQ(reported(), (Box{1, 1, 6, 6}));
}

TEST_F(PersonBoxes, WithoutARecordNothingIsDrawn) {
  core_.inputData = nullptr;
  core_.WriteFaceInfo_DL(nullptr, nullptr, 2, 9, 1, 7);
  core_.WriteFaceInfo_HW(nullptr, nullptr, 2, 9, 1, 7, 0);
  paint(100, 100, 40, 30, kFace).find();
  EXPECT_EQ(boxes(), (Boxes{{92, 92, 54, 44}, {92, 92, 54, 44}}));
}

// Five-byte cells: the sixth plane takes the first byte of the following cell, the last one a byte behind the
// map.
TEST_F(PersonBoxes, SixPlanesOfAMapOfFiveByteCells) {
  struct Case {
    int32_t columns, rows;
    std::string map, planes[6];
  };
  const Case cases[] = {{2, 1, "1 2 3 4 5 6 7 8 9 10 11", {"1 6", "2 7", "3 8", "4 9", "5 10", "6 11"}},
                        {1,
                         3,
                         "9 8 7 6 5 14 13 12 11 10 19 18 17 16 15 20",
                         {"9 14 19", "8 13 18", "7 12 17", "6 11 16", "5 10 15", "14 19 20"}}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.map);
    GuardedBytes map(guarded::bytes_of(c.map), Edge::kBack);
    const Bytes untouched(static_cast<std::size_t>(c.columns * c.rows), 77);
    std::vector<std::unique_ptr<GuardedBytes>> planes;
    for (int i = 0; i < 6; ++i) planes.push_back(std::make_unique<GuardedBytes>(untouched, Edge::kBack));
    const auto split = [&](int32_t columns, int32_t rows) {
      NETSIZE = columns;
      core_.segFactor = rows;
      core_.argMax_6label(planes[0]->data(), planes[1]->data(), planes[2]->data(), planes[3]->data(),
                          planes[4]->data(), planes[5]->data(), map.data());
    };
    for (const int32_t none : {0, -1}) {
      split(c.columns, none);
      split(none, c.rows);
    }
    for (auto& plane : planes) guarded::expect_same(untouched, plane->bytes(), 8, "empty map");
    split(c.columns, c.rows);
    for (std::size_t i = 0; i < 6; ++i)
      guarded::expect_same(guarded::bytes_of(c.planes[i]), planes[i]->bytes(), 8,
                           "plane " + std::to_string(i));
  }
}

}  // namespace
