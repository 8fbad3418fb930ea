/// The runtime session: what is handed to a run, what its answers come to, and its end.
#include <climits>
#include <cstring>
#include <functional>
#include <limits>
#include <optional>

#include "fakes/core_fixture.h"

namespace {

using fakes::kError;
using fakes::platform;
using Lines = std::vector<std::string>;

class Session : public CoreFixture {
 protected:
  const uint8_t* front_slot(int slot) const { return N_segResult_Front + slot * morvale::kRingSlotBytes; }
};

// A shape that a runtime names is believed; too few scores for the label map are a failed run.
TEST_F(Session, AShortAnswerIsAFailedRun) {
  struct Case {
    std::vector<int32_t> shape;
    int result;
  };
  const Case cases[] = {{{1, 64, 64, 5}, 0},
                        {{20480}, 0},
                        {{}, 0},
                        {{1, 65, 64, 5}, 0},
                        {{64, 64, 4}, -1},
                        {{1, 32, 32, 5}, -1},
                        {{1, 0, 64, 5}, -1},
                        {{-1, 64, 64, -5}, -1},
                        {{20479}, -1},
                        {{INT_MAX, INT_MAX, INT_MAX, INT_MAX}, 0},
                        {{INT_MAX, INT_MAX, 0}, -1}};
  start(16);
  set_frame(256, 256, 100);
  for (const Case& c : cases) {
    platform().shape = c.shape;
    const uint32_t before = core_.frameCount;
    forget();
    EXPECT_EQ(core_.Morvale_process(), c.result) << testing::PrintToString(c.shape);
    EXPECT_EQ(lines(kError), c.result == 0 ? Lines{} : Lines{"Morvale vexa execute  fail"});
    EXPECT_EQ(core_.frameCount, before + (c.result == 0));
    EXPECT_EQ(outputs.size(), c.result == 0 ? 1u : 0u);
  }
}

TEST_F(Session, TheRuntimeGetsOneInputAndAnEmptyOutputList) {
  start(16);
  set_frame(256, 256, 100);
  for (int frame = 0; frame < 2; ++frame) {
    ASSERT_EQ(core_.Morvale_process(), 0);
    ASSERT_EQ(platform().inputs.size(), 1u);
    EXPECT_EQ(platform().inputs[0].data, core_.netInput);
    EXPECT_EQ(platform().inputs[0].shape, (std::vector<int32_t>{1, 256, 256, 3}));
    EXPECT_EQ(platform().inputs[0].tail0, 0);
    EXPECT_EQ(platform().inputs[0].tail1, 1);
    EXPECT_EQ(platform().outputs_on_entry, 0u);
  }
}

TEST_F(Session, AFailedRunKeepsRingsAndCounter) {
  struct Case {
    const char* why;
    int32_t result;
    fakes::Output output;
  };
  const Case cases[] = {{"a failure that left an output", 1, fakes::Output::kLogits},
                        {"a negative failure", -7, fakes::Output::kNone},
                        {"success without an output", 0, fakes::Output::kNone},
                        {"success with an output without data", 0, fakes::Output::kNullData}};
  start(16);
  set_frame(256, 256, 100);
  answer(10.0f);
  ASSERT_EQ(run_frame(), 0);
  std::fill(std::begin(N_segResult_Front), std::end(N_segResult_Front), static_cast<uint8_t>(77));
  for (const Case& c : cases) {
    SCOPED_TRACE(c.why);
    platform().execute_result = c.result;
    platform().output = c.output;
    forget();
    EXPECT_EQ(core_.Morvale_process(), -1);
    EXPECT_EQ(lines(kError), Lines{"Morvale vexa execute  fail"});
    EXPECT_EQ(core_.frameCount, 1u);
    EXPECT_TRUE(inputs.empty() && outputs.empty());
    EXPECT_EQ(std::count(front_slot(0), front_slot(3), 77), 3 * morvale::kRingSlotBytes);
  }
}

// Seconds and microseconds are cut to milliseconds on their own, so the limit moves with the microsecond of
// the start.
TEST_F(Session, ARunOf31MillisecondsIsReportedButCounts) {
  struct Case {
    int64_t start_us, run_us;
    bool sluggish;
  };
  const Case cases[] = {{4'000'000, 30'999, false},
                        {4'000'000, 31'000, true},
                        {4'000'999, 30'001, true},
                        {4'999'999, 30'001, true},
                        {4'999'000, 30'999, false}};
  start(16);
  set_frame(256, 256, 100);
  answer(10.0f);
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.start_us << " + " << c.run_us);
    core_.frameCount = 0;
    N_segResult_Front[morvale::kRingSlotBytes] = 0;
    platform().clock_us = c.start_us;
    platform().execute_us = c.run_us;
    forget();
    EXPECT_EQ(core_.Morvale_process(), 0);
    EXPECT_EQ(lines(kError), c.sluggish ? Lines{"Morvale frame dealy sluggish ->  disable"} : Lines{});
    EXPECT_EQ(inputs.size(), c.sluggish ? 0u : 1u);
    EXPECT_EQ(outputs.size(), c.sluggish ? 0u : 1u);
    EXPECT_EQ(core_.frameCount, 1u);
    EXPECT_EQ(core_.status, 0);
    EXPECT_EQ(front_slot(1)[0], 255);
  }
}

/// One answer in a session of 60 frames goes wrong, at every place: that frame fails, or counts with what it
/// got, and the last one's record is as if nothing had been.
TEST_F(Session, AFaultAtAnyFrameIsThatFramesAlone) {
  constexpr int kFrames = 60;
  const float kNan = std::numeric_limits<float>::quiet_NaN(),
              kInfinity = std::numeric_limits<float>::infinity();
  struct Fault {
    const char* why;
    int result;
    std::function<void(fakes::Platform&)> set;
  };
  const Fault faults[] = {{"none", 0, [](auto&) {}},
                          {"a failure", -1, [](auto& p) { p.execute_result = 1; }},
                          {"a negative failure", -1, [](auto& p) { p.execute_result = INT_MIN; }},
                          {"no output", -1, [](auto& p) { p.output = fakes::Output::kNone; }},
                          {"no data", -1, [](auto& p) { p.output = fakes::Output::kNullData; }},
                          {"a short answer", -1,
                           [](auto& p) {
                             p.shape = {1, NETSIZE, NETSIZE, 4};
                           }},
                          {"another shape", 0,
                           [](auto& p) {
                             p.shape = {5, NETSIZE * NETSIZE};
                           }},
                          {"31 ms", 0, [](auto& p) { p.execute_us = 31'000; }},
                          {"no numbers", 0, [=](auto& p) { std::ranges::fill(p.logits, kNan); }},
                          {"infinity", 0, [=](auto& p) { std::ranges::fill(p.logits, kInfinity); }},
                          {"minus infinity", 0, [=](auto& p) { std::ranges::fill(p.logits, -kInfinity); }}};
  for (const int camera : {0, 16}) {
    std::optional<PersonWholeMeta> expected;
    for (const Fault& fault : faults) {
      for (int faulty = 0; faulty < kFrames; faulty += camera == 0 ? 1 : 13) {
        SCOPED_TRACE(testing::Message() << fault.why << " at frame " << faulty << ", camera " << camera);
        platform() = {};
        start(camera);
        set_frame(64, 48, 100);
        answer(ScoreMap(NETSIZE, NETSIZE, {255, 0, 0, 0, 0}).paint(8, 4, 12, 12, {0, 0, 255, 0, 0}));
        const fakes::Platform steady = platform();
        for (int frame = 0; frame < kFrames; ++frame) {
          if (frame == faulty) fault.set(platform());
          const uint32_t counted = core_.frameCount;
          const int result = core_.Morvale_process();
          ASSERT_EQ(result, frame == faulty ? fault.result : 0) << "frame " << frame;
          ASSERT_EQ(core_.frameCount, counted + (result == 0 ? 1 : 0)) << "frame " << frame;
          core_.Morvale_core_afterProcss();
          if (frame == faulty) platform() = steady;
        }
        if (!expected) expected = core_.result;
        const bool settled = faulty < kFrames - 20;
        ASSERT_TRUE(!settled || std::memcmp(&core_.result, &*expected, sizeof *expected) == 0);
        core_.Morvale_core_deinit();
      }
    }
  }
}

TEST_F(Session, ADestroyedSessionIsNeitherRunNorClosedAgain) {
  start(16);
  set_frame(256, 256, 100);
  core_.Morvale_core_deinit();
  platform().calls.clear();
  forget();
  EXPECT_EQ(core_.Morvale_process(), -1);
  EXPECT_EQ(lines(kError), Lines{"Morvale vexa execute  fail"});
  EXPECT_EQ(core_.Morvale_core_deinit(), 1);
  core_.Morvale_core_init(&record_);
  EXPECT_EQ(core_.Morvale_core_deinit(), 1);
  EXPECT_TRUE(platform().calls.empty());
  // The runtime may give the same address again: a new session is served.
  start(16);
  platform().calls.clear();
  EXPECT_EQ(core_.Morvale_process(), 0);
  core_.Morvale_core_deinit();
  EXPECT_EQ(platform().calls, (Lines{"execute", "close", "destroy"}));
}

}  // namespace
