/// The front camera's road from a label map to measured faces, and its debug paint.
#include <cstring>

#include "fakes/core_fixture.h"

namespace {

constexpr Scores kBackground{255, 0, 0, 0, 0};
constexpr Scores kFace{0, 0, 255, 0, 0};

class FrontScene : public CoreFixture {
 protected:
  FrontScene() {
    start(16);
    core_.scaleRatio = 1.0f;
  }
  FaceRect box() const { return core_.personBoxes[0]; }
};

// Cells 20..39 x 15..34 of 64 x 48. Enlarged, the score falls from 255 to 191 one column right of the last
// cell's first, and rises from 191 just left of the first cell: face pixels are columns 80..156,
// rows 60..136. Grown by 8 to the left and above and 7 to the right and below: 72..163 x 52..143.
TEST_F(FrontScene, AFaceIsFoundAndMeasured) {
  set_frame(4000, 3000, 100);
  answer(ScoreMap(64, 48, kBackground).paint(20, 15, 20, 20, kFace));
  core_.result.meta[0].box[3] = 31;
  core_.result.meta[1].faceYavg = 32;
  ASSERT_EQ(run_frame(), 0);
  EXPECT_EQ(core_.personCount, 1);
  EXPECT_EQ(box().x, 1125);
  EXPECT_EQ(box().y, 812);
  EXPECT_EQ(box().w, 1421);
  EXPECT_EQ(box().h, 1421);
  EXPECT_EQ(core_.result.ver, 1);
  EXPECT_EQ(core_.result.humanRatio, 13);
  // Back on the map the box is 72..162 x 51..142 (812 / 15.625 falls short of 52): 8190 of 49,152 pixels.
  EXPECT_EQ(words(core_.result.meta[0]),
            (std::array<int32_t, 14>{0, 0, 100, 0, 0, 0, 360, 0, 100, 166, 0, 0, 0, 31}));
  EXPECT_EQ(core_.result.meta[1].faceYavg, 32);
}

// A portrait picture is 144 columns wide, but luma is looked up with the map's 256 columns a row: row 160
// lies behind the luma plane, in the chroma bytes.
TEST_F(FrontScene, LumaIsReadWithTheMapsStride) {
  set_frame(1080, 1920, 100);
  answer(ScoreMap(64, 64, kBackground).paint(10, 40, 15, 10, kFace));
  ASSERT_EQ(run_frame(), 0);
  ASSERT_EQ(core_.result.ver, 1);
  EXPECT_EQ(core_.result.meta[0].faceYavg, 128);
  EXPECT_EQ(core_.result.meta[0].hsv[2], 100);
}

// Each plane goes to its own place: label 3 makes a face but no human, 1 and 4 make humans but no face.
TEST_F(FrontScene, LabelsReachTheFusionInOrder) {
  struct Case {
    Scores scores;
    int persons, human;
  };
  const Case cases[] = {{{250, 0, 0, 0, 0}, 0, 0},
                        {{100, 250, 0, 0, 0}, 0, 100},
                        {{100, 0, 250, 0, 0}, 1, 100},
                        {{100, 0, 0, 250, 0}, 1, 0},
                        {{100, 0, 0, 0, 250}, 0, 100}};
  for (const Case& c : cases) {
    ScoreMap map(64, 48, c.scores);
    core_.segFactor = 48;
    core_.argMax_human_onlySkin(core_.rgbInput, core_.resizedFrame, map.data());
    EXPECT_EQ(core_.personCount, c.persons);
    EXPECT_EQ(core_.result.humanRatio, c.human);
  }
}

TEST_F(FrontScene, TheDebugPaintShowsLabel2InTheCornerOfTheFrame) {
  set_frame(600, 400, 9);
  record_.stride = 600;
  core_.segFactor = 48;
  ScoreMap map(64, 48, {10, 20, 30, 40, 50});
  core_.argMax_human_onlySkin(core_.rgbInput, core_.resizedFrame, map.data());
  EXPECT_EQ(std::count(frame_.begin(), frame_.end(), 30), 0);
  VISUALDEBUG = 1;
  core_.argMax_human_onlySkin(core_.rgbInput, core_.resizedFrame, map.data());
  EXPECT_EQ(std::count(frame_.begin(), frame_.end(), 30), 192 * 256);
  for (const auto& [row, column, value] :
       {std::array{0, 0, 30}, std::array{191, 255, 30}, std::array{191, 256, 9}, std::array{192, 0, 9},
        std::array{100, 256, 9}})
    EXPECT_EQ(frame_[static_cast<std::size_t>(row * 600 + column)], value) << row << ", " << column;
}

TEST_F(FrontScene, TheDebugPaintStopsAtThePlanesEnd) {
  set_frame(160, 120, 9);
  record_.stride = 160;
  core_.segFactor = 64;
  VISUALDEBUG = 2;
  ScoreMap map(64, 64, {10, 20, 30, 40, 50});
  core_.argMax_human_onlySkin(core_.rgbInput, core_.resizedFrame, map.data());
  EXPECT_EQ(std::count(frame_.begin(), frame_.begin() + 19'200, 30), 19'200);
  EXPECT_EQ(std::count(frame_.begin() + 19'200, frame_.end(), 128), 9'600);
  record_.yPlane = nullptr;
  core_.argMax_human_onlySkin(core_.rgbInput, core_.resizedFrame, map.data());
}

// A stride of 0 puts every row of the paint on row 0.
TEST_F(FrontScene, TheDebugPaintTakesTheStrideAsItIs) {
  set_frame(600, 400, 9);
  core_.segFactor = 48;
  VISUALDEBUG = 1;
  ScoreMap map(64, 48, {10, 20, 30, 40, 50});
  core_.argMax_human_onlySkin(core_.rgbInput, core_.resizedFrame, map.data());
  EXPECT_EQ(std::count(frame_.begin(), frame_.begin() + 256, 30), 256);
  EXPECT_EQ(std::count(frame_.begin(), frame_.end(), 30), 256);
}

TEST_F(FrontScene, AMapWithoutRowsFindsNobody) {
  core_.segFactor = 0;
  core_.personCount = 4;
  core_.result.humanRatio = 4;
  VISUALDEBUG = 1;
  ScoreMap map(64, 64, kFace);
  core_.argMax_human_onlySkin(core_.rgbInput, core_.resizedFrame, map.data());
  EXPECT_EQ(core_.personCount, 0);
  EXPECT_EQ(core_.result.humanRatio, 0);
  EXPECT_EQ(core_.result.ver, 0);
}

}  // namespace
