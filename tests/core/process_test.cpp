/// Morvale_process: the gate, the model's state, the network's output, the label-map rings, what is told of a
/// frame.
#include <cfenv>
#include <cstring>
#include <limits>

#include "fakes/core_fixture.h"

namespace {

using fakes::kError;
using fakes::platform;
using Lines = std::vector<std::string>;

class Process : public CoreFixture {
 protected:
  const uint8_t* front_slot(int slot) const { return N_segResult_Front + slot * morvale::kRingSlotBytes; }
  const uint8_t* back_slot(int slot) const { return N_segResult_Back + slot * morvale::kRingSlotBytes; }
};

TEST_F(Process, TheGateOpensUpTo25AndOtherwiseClearsResultAndCounter) {
  start(16);
  set_frame(256, 256, 100);
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float infinity = std::numeric_limits<float>::infinity();
  for (const float level : {25.0f, -1.0f, nan}) {
    record_.gateLevel = level;
    const uint32_t before = core_.frameCount;
    EXPECT_EQ(core_.Morvale_process(), 0);
    EXPECT_EQ(core_.frameCount, before + 1) << level;
  }
  for (const float level : {25.001f, infinity}) {
    record_.gateLevel = level;
    std::memset(static_cast<void*>(&core_.result), 0xAB, sizeof core_.result);
    core_.frameCount = 12;
    core_.personCount = 3;
    core_.segFactor = 48;
    platform().calls.clear();
    EXPECT_EQ(core_.Morvale_process(), 0);
    PersonWholeMeta out;
    const PersonWholeMeta zero{};
    core_.Morvale_core_getresult(&out);
    EXPECT_EQ(std::memcmp(&out, &zero, sizeof out), 0) << level;
    EXPECT_EQ(core_.frameCount, 0u);
    EXPECT_EQ(core_.personCount, 3);
    EXPECT_EQ(core_.segFactor, 48);
    EXPECT_TRUE(platform().calls.empty());
  }
  // The gate comes before everything else, also before the complaint that there is no model.
  core_.status = -1;
  forget();
  EXPECT_EQ(core_.Morvale_process(), 0);
  EXPECT_TRUE(platform().log.empty());
}

TEST_F(Process, WithoutAUsableModelNothingRuns) {
  struct Case {
    int32_t status;
    uint32_t count;
    int result;
    Lines log;
  };
  const Lines slow{"[NON ERROR] Morvale sluggish -> disable in process"};
  const Lines failed{"[NON ERROR] Morvale model openFail in process"};
  const Lines none{"[NON ERROR] Morvale model openFail in process1"};
  const Case cases[] = {{2, 0, -1, slow},    {2, 23, -1, {}},    {2, 24, -1, slow},
                        {2, 25, -1, {}},     {1, 0, -1, failed}, {1, 47, -1, {}},
                        {1, 48, -1, failed}, {-1, 0, 0, none},   {-1, 5, 0, none}};
  start(16);
  set_frame(256, 256, 100);
  for (const Case& c : cases) {
    core_.status = c.status;
    core_.frameCount = c.count;
    forget();
    platform().calls.clear();
    EXPECT_EQ(core_.Morvale_process(), c.result);
    EXPECT_EQ(lines(kError), c.log) << c.status << " at " << c.count;
    EXPECT_EQ(core_.frameCount, c.count);
    EXPECT_TRUE(platform().calls.empty());
  }
}

// Normalisation, scores, face figures and person share all round somewhere.
TEST_F(Process, TheCallersRoundingModeChangesNoByte) {
  const auto run = [&](int mode) {
    start(16);
    set_frame(500, 300, 0);
    for (std::size_t i = 0; i < frame_.size(); ++i) frame_[i] = static_cast<uint8_t>(i * 7 % 251);
    record_.faceCount = 1;
    record_.faces[0] = {101, 57, 201, 133};
    ScoreMap map(64, 64, {30, 60, 220, 10, 90});
    map.paint(10, 9, 20, 17, {90, 30, 5, 60, 200});
    answer(map);
    for (float& logit : platform().logits) logit += 0.01f;
    std::fill(std::begin(N_segResult_Front), std::end(N_segResult_Front), uint8_t{0});
    std::fesetround(mode);
    for (int frame = 0; frame < 3; ++frame) EXPECT_EQ(run_frame(), 0);
    EXPECT_EQ(std::fegetround(), mode);
    std::fesetround(FE_TONEAREST);
    std::vector<uint8_t> seen(std::begin(N_segResult_Front), std::end(N_segResult_Front));
    const auto append = [&](const void* from, std::size_t bytes) {
      const auto* first = static_cast<const uint8_t*>(from);
      seen.insert(seen.end(), first, first + bytes);
    };
    append(core_.netInput, 256 * 256 * 3 * sizeof(float));
    append(&core_.result, sizeof core_.result);
    append(core_.personBoxes, sizeof core_.personBoxes);
    return seen;
  };
  const std::vector<uint8_t> nearest = run(FE_TONEAREST);
  for (const int mode : {FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO}) EXPECT_EQ(run(mode), nearest) << mode;
}

TEST_F(Process, ScoresFrom10BelowTo10AboveBecomeBytes) {
  struct Case {
    float logit;
    int byte;
  };
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const float infinity = std::numeric_limits<float>::infinity();
  const Case cases[] = {
      {-10.0f, 0},           {-10.01f, 0},           {-infinity, 0}, {nan, 0},
      {0.0f, 127},           {9.99f, 254},           {10.0f, 255},   {11.0f, 255},
      {infinity, 255},       {-0x1.55555cp-1f, 119},  // in double, or times 12.75, these three are one less
      {-0x1.69697p-2f, 123}, {-0x1.414148p-5f, 127}};
  start(16);
  set_frame(256, 256, 100);
  for (std::size_t i = 0; i < std::size(cases); ++i) platform().logits[i] = cases[i].logit;
  platform().logits[20'479] = 10.0f;
  ASSERT_EQ(core_.Morvale_process(), 0);
  for (std::size_t i = 0; i < std::size(cases); ++i)
    EXPECT_EQ(front_slot(1)[i], cases[i].byte) << cases[i].logit;
  EXPECT_EQ(front_slot(1)[20'479], 255);
  EXPECT_EQ(front_slot(1)[20'480], 0);
  EXPECT_EQ(std::count(back_slot(0), back_slot(3), 0), 3 * morvale::kRingSlotBytes);
}

// Frames one and two fill the slot before theirs with their own map; from the third on they blend. A jump of
// 255 in all five scores is a change of 319, which the front camera keeps as 63: weight 130 for the old map.
TEST_F(Process, TheThirdFrameIsTheFirstToBlend) {
  struct Case {
    int camera, blended;
  };
  for (const Case& c : {Case{16, 125}, Case{0, 255}}) {
    start(c.camera);
    set_frame(256, 256, 100);
    const uint8_t* ring = c.camera == 16 ? N_segResult_Front : N_segResult_Back;
    const auto slot = [&](int i) { return static_cast<int>(ring[i * morvale::kRingSlotBytes + 17]); };
    answer(10.0f);
    ASSERT_EQ(run_frame(), 0);
    EXPECT_EQ(slot(1), 255);
    EXPECT_EQ(slot(0), 255);
    answer(-10.0f);
    ASSERT_EQ(run_frame(), 0);
    EXPECT_EQ(slot(2), 0);
    EXPECT_EQ(slot(1), 0);
    answer(10.0f);
    ASSERT_EQ(run_frame(), 0);
    EXPECT_EQ(slot(0), c.blended);
    EXPECT_EQ(slot(2), 0);
    EXPECT_EQ(core_.frameCount, 3u);
    // A gated frame makes the next one a first one again.
    record_.gateLevel = 30.0f;
    core_.Morvale_process();
    record_.gateLevel = 0.0f;
    ASSERT_EQ(core_.Morvale_process(), 0);
    EXPECT_EQ(slot(1), 255);
    EXPECT_EQ(slot(0), 255);
  }
}

TEST_F(Process, TheRingFollowsTheCameraOfTheFrameNotTheModel) {
  start(16);
  set_frame(256, 256, 100);
  answer(10.0f);
  record_.cameraType = 3;
  ASSERT_EQ(core_.Morvale_process(), 0);
  EXPECT_EQ(back_slot(1)[20'479], 255);
  EXPECT_EQ(front_slot(1)[0], 0);
}

// Every section that begins ends, on a frame that fails too.
TEST_F(Process, TheStagesOfAFrameShowInASystemTrace) {
  const std::vector<std::string> input = {
      "+Morvale_process", "+Morvale shrink", "-", "+Morvale colour", "-", "+Morvale network", "-"};
  const auto and_then = [&](std::vector<std::string> rest) {
    rest.insert(rest.begin(), input.begin(), input.end());
    return rest;
  };
  start(16);
  set_frame(256, 256, 100);
  platform().trace.clear();
  run_frame();
  EXPECT_EQ(platform().trace, and_then({"+Morvale labels", "-", "-", "+Morvale_core_afterProcss", "-"}));
  platform().execute_result = 1;
  platform().trace.clear();
  core_.Morvale_process();
  EXPECT_EQ(platform().trace, and_then({"-"}));
}

TEST_F(Process, TheDebugLineNamesTheFrame) {
  start(16);
  set_frame(256, 256, 100);
  record_.faceCount = 2;
  record_.stride = 256;
  ASSERT_EQ(core_.Morvale_process(), 0);
  EXPECT_TRUE(platform().log.empty());
  VISUALDEBUG = 1;
  ASSERT_EQ(core_.Morvale_process(), 0);
  EXPECT_EQ(lines(fakes::kDebug), Lines{"morvale  width [256]  height [256] faceCount [2]  stride [256] "});
}

}  // namespace
