/// The back camera's analysis: human ratio, person box, occupancy grid, resource hint.
#include <cstring>

#include "fakes/core_fixture.h"

namespace {

using Words = std::array<int32_t, 4>;

constexpr Scores kBackground{100, 0, 0, 0, 0};
constexpr Scores kHead{0, 0, 100, 0, 0};   // label 2 wins: person region and foreground
constexpr Scores kFront{0, 100, 0, 0, 0};  // foreground only
constexpr Scores kBody{0, 0, 0, 0, 100};

class BackScene : public CoreFixture {
 protected:
  BackScene() { geometry(24, 3200, 2400); }

  /// A map of 32 x rows cells from a width x height frame.
  void geometry(int rows, int width, int height) {
    start(0);
    core_.segFactor = rows;
    record_.width = width;
    record_.height = height;
  }

  ScoreMap map() const { return ScoreMap(32, core_.segFactor, kBackground); }
  void analyse(ScoreMap scores) { core_.argMax_back_only_human(scores.data()); }

  Words box(int i) const {
    const int32_t* b = core_.result.meta[i].box;
    return {b[0], b[1], b[2], b[3]};
  }
  Words person() const {
    const FaceRect& r = core_.personBoxes[0];
    return {r.x, r.y, r.w, r.h};
  }
};

TEST_F(BackScene, WithoutARegionOnlyRatioAndBoxesAreWritten) {
  VISUALDEBUG = 2;
  std::memset(static_cast<void*>(&core_.result), 0x11, sizeof core_.result);
  std::memset(core_.personBoxes, 0x11, sizeof core_.personBoxes);
  core_.personCount = 3;
  record_.qermHint = 42;
  // 255 of 768 cells; a tie with any other label is no win, for label 4 and for label 2.
  analyse(map()
              .paint(0, 0, 32, 7, kBody)
              .paint(0, 7, 31, 1, kBody)
              .at(31, 7, {0, 100, 0, 0, 100})
              .at(0, 8, {0, 0, 0, 100, 100})
              .at(10, 12, {0, 0, 100, 100, 0})
              .at(20, 12, {0, 0, 100, 0, 100})
              .at(15, 20, {0, 100, 100, 0, 0})
              .at(25, 20, {100, 0, 100, 0, 0}));
  EXPECT_EQ(core_.result.humanRatio, 33);
  EXPECT_EQ(core_.result.ver, 0x11111111);
  EXPECT_EQ(core_.personCount, 3);
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(box(i), Words{});
    EXPECT_EQ(
        core_.personBoxes[i].x | core_.personBoxes[i].y | core_.personBoxes[i].w | core_.personBoxes[i].h, 0);
    EXPECT_EQ(core_.result.meta[i].skinRatio, 0x11111111);
  }
  EXPECT_TRUE(fakes::platform().log.empty());
}

TEST_F(BackScene, ThePersonBoxIsStoredInTwoOrders) {
  record_.width = 4000;  // 125 pixels a cell each way
  record_.height = 3000;
  std::memset(core_.personBoxes, 0x11, sizeof core_.personBoxes);
  analyse(map().paint(10, 8, 5, 3, kHead));
  // Cells 10..14 x 8..10 mark 10..16 x 8..12: a block of 3 x 3 looks back from each cell.
  EXPECT_EQ(box(0), (Words{1250, 750, 1000, 500}));
  EXPECT_EQ(person(), (Words{1250, 1000, 750, 500}));
  EXPECT_EQ(core_.personBoxes[1].x, 0);
  EXPECT_EQ(core_.personCount, 1);
  EXPECT_EQ(core_.result.ver, 5);
}

// 3000 / 32 = 93.75 is cut to 93 before it is used, as is 1700 / 24 = 70.8.
TEST_F(BackScene, ScalesAreWholePixels) {
  geometry(32, 3000, 3000);
  analyse(map().paint(10, 8, 5, 3, kHead));
  EXPECT_EQ(person(), (Words{930, 744, 558, 372}));
  geometry(24, 3000, 1700);
  analyse(map().paint(10, 8, 5, 3, kHead));
  EXPECT_EQ(person(), (Words{930, 560, 558, 280}));
}

TEST_F(BackScene, NearTheTopAndLeftBorderTheBlockReachesBackToIt) {
  struct Case {
    const char* why;
    int x, y, w, h;
    Words person;
  };
  const Case cases[] = {{"row 0 reaches row 3, not 4", 10, 0, 11, 1, {1000, 0, 1200, 300}},
                        {"row 1 reaches row 3", 10, 1, 11, 1, {1000, 100, 1200, 200}},
                        {"row 2 reaches row 4", 10, 2, 11, 1, {1000, 200, 1200, 200}},
                        {"column 0 reaches column 3, not 4", 0, 8, 1, 9, {0, 800, 300, 1000}},
                        {"column 1 reaches column 3", 1, 8, 1, 9, {100, 800, 200, 1000}},
                        {"column 2 reaches column 4", 2, 8, 1, 9, {200, 800, 200, 1000}},
                        {"the right and lower border end the region", 26, 18, 6, 6, {2600, 1800, 500, 500}}};
  for (const Case& c : cases) {
    analyse(map().paint(c.x, c.y, c.w, c.h, kHead));
    EXPECT_EQ(person(), c.person) << c.why;
  }
}

// One row of n cells marks 3 rows of n + 2: an area of 2 * (n + 1). It must exceed an eightieth of the map,
// cut to a whole number: 6, 7, 9, 12.
TEST_F(BackScene, OnlyALargeEnoughRegionIsAPerson) {
  struct Case {
    int rows, cells, persons;
  };
  for (const Case& c : {Case{15, 2, 0}, Case{15, 3, 1}, Case{18, 2, 0}, Case{18, 3, 1}, Case{24, 3, 0},
                        Case{24, 4, 1}, Case{32, 5, 0}, Case{32, 6, 1}}) {
    geometry(c.rows, 3200, 2400);
    core_.personCount = 3;
    core_.personBoxes[0] = {1, 2, 3, 4};
    record_.qermHint = 8;
    analyse(map().paint(10, 8, c.cells, 1, kHead));
    EXPECT_EQ(core_.personCount, c.persons) << c.rows << " rows, " << c.cells << " cells";
    EXPECT_EQ(box(0)[1], c.persons * (c.cells + 1) * 100);
    EXPECT_EQ(core_.result.ver, 5);
    EXPECT_EQ(box(3)[3], 8);
    EXPECT_EQ(person() == Words{}, c.persons == 0);
  }
  // 2 x 2 cells: an area of 9 is not above 9.
  geometry(24, 3200, 2400);
  analyse(map().paint(10, 8, 2, 2, kHead));
  EXPECT_EQ(core_.personCount, 0);
}

TEST_F(BackScene, TheLargestRegionIsThePerson) {
  analyse(map().paint(5, 6, 4, 2, kHead).paint(15, 12, 6, 4, kHead).paint(26, 5, 2, 6, kHead));
  EXPECT_EQ(person(), (Words{1500, 1200, 700, 500}));
  EXPECT_EQ(core_.personCount, 1);
}

// A frame on the left with an island in it. The bottom bar meets the island from the left: the frame takes
// the island's right edge 17, since that lies right of its own left edge, and forgets that the top bar
// reached 27.
TEST_F(BackScene, AMergeTakesTheUpperRegionsRightEdge) {
  analyse(
      map().paint(5, 6, 21, 1, kHead).paint(5, 6, 1, 11, kHead).at(15, 12, kHead).paint(5, 15, 13, 1, kHead));
  EXPECT_EQ(person(), (Words{500, 600, 1400, 1200}));
}

// Below a merge the second leg still bears the merged region's dead label, so its length is lost.
TEST_F(BackScene, ALegOfAMergedRegionIsLost) {
  analyse(map()
              .paint(15, 5, 13, 1, kHead)
              .paint(15, 5, 1, 4, kHead)
              .paint(27, 5, 1, 15, kHead)
              .paint(6, 9, 10, 1, kHead));
  EXPECT_EQ(person(), (Words{600, 500, 2300, 600}));
}

// A merge does not ask whether the region on the left is alive: the block on the right joins the dead leg and
// vanishes with it, though it is larger than what remains.
TEST_F(BackScene, ARegionMergedIntoADeadOneVanishes) {
  analyse(map()
              .paint(10, 5, 6, 1, kHead)
              .paint(10, 5, 1, 4, kHead)
              .paint(15, 5, 1, 15, kHead)
              .paint(8, 9, 3, 1, kHead)
              .paint(22, 8, 8, 7, kHead)
              .paint(15, 17, 10, 1, kHead));
  EXPECT_EQ(person(), (Words{800, 500, 900, 600}));
}

TEST_F(BackScene, ForegroundNeedsAStrictWinOverLabels0And4) {
  analyse(map()
              .at(0, 0, {99, 100, 0, 0, 0})
              .at(1, 0, {100, 100, 0, 0, 0})
              .at(2, 0, {0, 0, 100, 0, 99})
              .at(3, 0, {0, 0, 0, 100, 100})
              .at(4, 0, {99, 0, 0, 100, 99})
              .at(5, 0, {0, 100, 100, 100, 0})
              .at(6, 0, kBody));
  EXPECT_EQ((std::vector<int>(core_.labelMapA, core_.labelMapA + 8)),
            (std::vector<int>{1, 0, 1, 0, 1, 1, 0, 0}));
}

// Foreground in columns 0..15: the grid's columns 0..8 lie wholly in it, column 9 needs column 16 too.
TEST_F(BackScene, TheGridIsPackedHighBitFirst) {
  analyse(map().paint(0, 0, 16, 24, kFront).paint(4, 8, 4, 4, kHead));
  for (int i = 0; i < 855; ++i) ASSERT_EQ(core_.gridMap[i], i < 285 && i % 19 < 9 ? 1 : 0) << i;
  const uint32_t packed[16] = {0xff801ff0, 0x03fe007f, 0xc00ff801, 0xff003fe0, 0x07fc00ff, 0x801ff003,
                               0xfe007fc0, 0x0ff801ff, 0x003fe000, 0,          0,          0,
                               0,          0,          0,          0};
  for (int i = 0; i < 16; ++i)
    EXPECT_EQ(static_cast<uint32_t>(core_.result.meta[1 + i / 4].box[i % 4]), packed[i]) << "word " << i + 1;
}

TEST_F(BackScene, AFullGridLeavesTheLastThreeBitsAndTheHintsWord) {
  record_.qermHint = -2;
  for (const int rows : {15, 18, 24, 32}) {
    geometry(rows, 3200, 2400);
    analyse(map().paint(0, 0, 32, rows, kFront).paint(4, 8, 4, 4, kHead));
    EXPECT_EQ(box(1), (Words{-1, -1, -1, -1}));
    EXPECT_EQ(box(2), (Words{-1, -1, -1, -1}));
    EXPECT_EQ(box(3), (Words{-8, 0, 0, -2}));
    EXPECT_EQ(box(4), Words{});
    int32_t at_228;
    std::memcpy(&at_228, reinterpret_cast<const char*>(&core_.result) + 228, 4);
    EXPECT_EQ(at_228, -2);
  }
}

TEST_F(BackScene, DebugLinesShowHintBoxAndGrid) {
  record_.qermHint = 7;
  const ScoreMap scores = map().paint(0, 0, 16, 24, kFront).paint(4, 8, 5, 4, kHead);
  analyse(scores);
  EXPECT_TRUE(fakes::platform().log.empty());
  for (const int level : {1, 2}) {
    VISUALDEBUG = level;
    forget();
    analyse(scores);
    const std::vector<std::string> log = lines(fakes::kDebug);
    ASSERT_EQ(log.size(), 17u);
    EXPECT_EQ(log[0], "MorvaleMeta = qermHint 7 ");
    EXPECT_EQ(log[1], "MorvaleMeta :: 400 600 800 500");
    EXPECT_EQ(log[2], "MorvaleMeta :: 1111111110000000000");
    EXPECT_EQ(log[16], log[2]);
  }
}

TEST_F(BackScene, AMapWithoutRowsGivesZero) {
  core_.segFactor = 0;
  core_.result.humanRatio = 9;
  core_.result.ver = 3;
  core_.personBoxes[0] = {1, 2, 3, 4};
  ScoreMap scores(32, 32, kHead);
  core_.argMax_back_only_human(scores.data());
  EXPECT_EQ(core_.result.humanRatio, 0);
  EXPECT_EQ(core_.result.ver, 3);
  EXPECT_EQ(person(), Words{});
}

// What one camera's analysis does not write survives from the other's.
TEST_F(BackScene, FiguresOfEarlierFacesStay) {
  core_.result.meta[1].hsv[2] = 123;
  core_.result.meta[0].faceYavg = 45;
  analyse(map().paint(10, 8, 5, 3, kHead));
  EXPECT_EQ(core_.result.meta[1].hsv[2], 123);
  EXPECT_EQ(core_.result.meta[0].faceYavg, 45);
}

}  // namespace
