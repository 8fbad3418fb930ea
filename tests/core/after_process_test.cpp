/// Morvale_core_afterProcss and Morvale_core_getresult: the turning of the ring and the hand-over.
#include <cstring>
#include <numeric>

#include "fakes/core_fixture.h"

namespace {

using fakes::kDebug;
using fakes::kInfo;
using fakes::platform;
using LogLines = std::vector<fakes::LogLine>;

constexpr Scores kBackground{200, 0, 0, 0, 0};
constexpr Scores kBody{0, 0, 0, 0, 200};

class AfterProcess : public CoreFixture {};

TEST_F(AfterProcess, WithoutAnAnalysedFrameNothingMoves) {
  start(0);
  core_.result.ver = 9;
  EXPECT_EQ(core_.Morvale_core_afterProcss(), 0);
  EXPECT_EQ(platform().log, (LogLines{{kInfo, "[Morvale] Reversal exec process skip current frame"}}));
  EXPECT_EQ(core_.result.ver, 9);
  EXPECT_EQ(N0, 1);
  EXPECT_EQ(N1, 0);
}

TEST_F(AfterProcess, TheRingTurnsOverThreeSlots) {
  start(0);
  set_frame(256, 256, 100);
  const int expected[][2] = {{2, 1}, {0, 2}, {1, 0}, {2, 1}};
  for (const auto& [n0, n1] : expected) {
    ASSERT_EQ(run_frame(), 0);
    EXPECT_EQ(N0, n0);
    EXPECT_EQ(N1, n1);
  }
  EXPECT_EQ(N2, 0);
}

TEST_F(AfterProcess, TheAnalysisSeesTheSlotJustWritten) {
  start(0);
  set_frame(256, 256, 100);
  answer(ScoreMap(32, 32, kBackground).paint(0, 0, 32, 16, kBody));
  ASSERT_EQ(run_frame(), 0);
  EXPECT_EQ(core_.result.humanRatio, 50);
  answer(ScoreMap(32, 32, kBackground).paint(0, 0, 32, 8, kBody));
  ASSERT_EQ(run_frame(), 0);
  EXPECT_EQ(core_.result.humanRatio, 25);
}

// A failed frame writes nothing: its slot still holds the map of three frames before, and that one is
// analysed.
TEST_F(AfterProcess, AfterAFailedFrameTheOldSlotIsAnalysedAndTheRingTurns) {
  start(0);
  set_frame(256, 256, 100);
  ASSERT_EQ(run_frame(), 0);
  ASSERT_EQ(N0, 2);
  ScoreMap old = ScoreMap(32, 32, kBackground).paint(0, 0, 32, 8, kBody);
  std::memcpy(N_segResult_Back + 2 * morvale::kRingSlotBytes, old.data(), old.bytes().size());
  platform().execute_result = 1;
  EXPECT_EQ(run_frame(), -1);
  EXPECT_EQ(core_.result.humanRatio, 25);
  EXPECT_EQ(N0, 0);
  EXPECT_EQ(N1, 2);
}

TEST_F(AfterProcess, TheCameraIsReadAgain) {
  start(16);
  set_frame(256, 256, 100);
  ASSERT_EQ(core_.Morvale_process(), 0);
  ScoreMap body(64, 64, kBody);
  std::memcpy(N_segResult_Back + morvale::kRingSlotBytes, body.data(), body.bytes().size());
  record_.cameraType = 15;
  core_.Morvale_core_afterProcss();
  EXPECT_EQ(core_.result.humanRatio, 100);
}

TEST_F(AfterProcess, GetresultCopiesAllWordsAndLogsEveryFiftiethFrame) {
  start(16);
  int32_t filled[72], out[72];
  std::iota(std::begin(filled), std::end(filled), 100);
  std::memcpy(static_cast<void*>(&core_.result), filled, sizeof filled);
  core_.result.meta[0].faceYavg = 7;
  core_.result.humanRatio = 3;
  core_.personCount = 2;
  const std::string line =
      "Morvale Ver 100 |De 2 : hsv : [108 ,109, 110]  hsv min: [105 106 107]  hsvmax [112 113 114] "
      "face_Yavg : [  7]  HumanRatio : [ 3] skinRatio [111]";
  struct Case {
    uint32_t count;
    int level;
    bool logged;
  };
  for (const Case& c : {Case{0, 0, true}, Case{1, 0, false}, Case{49, 0, false}, Case{50, 0, true},
                        Case{51, 1, true}, Case{100, -1, true}, Case{101, -1, false}}) {
    core_.frameCount = c.count;
    VISUALDEBUG = c.level;
    forget();
    EXPECT_EQ(core_.Morvale_core_getresult(reinterpret_cast<PersonWholeMeta*>(out)), 1);
    EXPECT_EQ(platform().log, c.logged ? (LogLines{{kDebug, line}}) : LogLines{}) << c.count;
  }
  filled[1] = 3;
  filled[4] = 7;
  EXPECT_EQ(std::memcmp(out, filled, sizeof out), 0);
}

}  // namespace
