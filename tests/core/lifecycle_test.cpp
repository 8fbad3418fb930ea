/// The core's life: init, model loading, deinit.
#include <cstring>
#include <memory>
#include <vector>

#include "fakes/core_fixture.h"

namespace {

using fakes::kDebug;
using fakes::kError;
using fakes::LogLine;
using fakes::platform;
using Lines = std::vector<std::string>;
using LogLines = std::vector<LogLine>;

constexpr const char* kFrontModel =
    "/vendor/etc/tavu/morvale_1.0/PhotoParsing5_AWB_FACE_256_DSP_iter_495623_v2.0_q.dlc";
constexpr const char* kBackModel =
    "/vendor/etc/tavu/morvale_1.0/PhotoParsing5_AF_FACE_128_DSP_iter_300000_v2.0_q.dlc";

class Lifecycle : public CoreFixture {
 protected:
  /// Loads a model; returns the result and leaves in `printed_` what went to standard output.
  int load(int camera_type) {
    testing::internal::CaptureStdout();
    const int result = core_.Morvale_core_setModel(camera_type);
    printed_ = testing::internal::GetCapturedStdout();
    return result;
  }
  std::string printed_;
};

TEST_F(Lifecycle, ConstructorLeavesNoBufferBehind) {
  EXPECT_EQ(core_.firstWord, 0);
  EXPECT_EQ(core_.inputData, nullptr);
  EXPECT_EQ(core_.frameCount, 0u);
  for (const void* buffer : {static_cast<void*>(core_.resizedFrame), static_cast<void*>(core_.rgbInput),
                             static_cast<void*>(core_.netInput), static_cast<void*>(core_.gridMap),
                             static_cast<void*>(core_.labelMapA), static_cast<void*>(core_.labelMapB),
                             static_cast<void*>(core_.labelMapWide)})
    EXPECT_EQ(buffer, nullptr);
}

TEST_F(Lifecycle, InitClearsFromTheWorkWordsToTheEndOfTheResult) {
  auto* first = reinterpret_cast<unsigned char*>(core_.workWordsA);
  auto* end = reinterpret_cast<unsigned char*>(&core_.frameCount);
  std::fill(first, end, static_cast<unsigned char>(0xAB));
  core_.frameCount = 77;
  N0 = N1 = N2 = 2;
  EXPECT_EQ(core_.Morvale_core_init(&record_), 1);
  EXPECT_EQ(std::count(first, end, 0), end - first);
  EXPECT_EQ(core_.inputData, &record_);
  EXPECT_EQ(core_.status, -1);
  EXPECT_EQ(core_.frameCount, 0u);
  EXPECT_EQ(N0, 1);
  EXPECT_EQ(N1, 0);
  EXPECT_EQ(N2, 0);
}

TEST_F(Lifecycle, DebugLevelComesFromTheProperty) {
  struct Case {
    const char* value;
    int level;
  };
  const Case cases[] = {{"0", 0},   {"1", 1},    {"2", 2},   {"3", 1},        {"7", 1},
                        {"-1", -1}, {" +2x", 2}, {"abc", 0}, {"-2000", -2000}};
  for (const Case& c : cases) {
    platform().properties["persist.morvale.capture.debug"] = c.value;
    forget();
    core_.Morvale_core_init(&record_);
    EXPECT_EQ(VISUALDEBUG, c.level) << c.value;
    EXPECT_EQ(platform().log,
              (LogLines{{kDebug, "[MORVALE] VISUALDEBUG is set to " + std::to_string(c.level)}}));
  }
  // Unset: the length decides, whatever the buffer holds; an empty value is the same.
  platform().properties.clear();
  core_.Morvale_core_init(&record_);
  EXPECT_EQ(VISUALDEBUG, 0);
  platform().properties["persist.morvale.capture.debug"] = "";
  core_.Morvale_core_init(&record_);
  EXPECT_EQ(VISUALDEBUG, 0);
}

TEST_F(Lifecycle, SetModelSizesAndOpensTheModelOfTheCamera) {
  struct Case {
    int camera, pad, net;
    const char *model, *chosen, *sizes;
  };
  const Case cases[] = {
      {16, 256, 64, kFrontModel, "[Morvale] cameraType  16 in front",
       "[MORVALE] qc PADSIZE 256  NETSIZE 64 "},
      {0, 128, 32, kBackModel, "[Morvale] cameraType  0 in back", "[MORVALE] qc PADSIZE 128  NETSIZE 32 "},
      {-3, 128, 32, kBackModel, "[Morvale] cameraType  -3 in back", "[MORVALE] qc PADSIZE 128  NETSIZE 32 "}};
  for (const Case& c : cases) {
    core_.Morvale_core_init(&record_);
    platform().calls.clear();
    platform().clock_us = 5'999'500;  // 999 ms of second 5: after 600 us the difference reads 1000 - 999
    platform().open_us = 600;
    forget();
    EXPECT_EQ(load(c.camera), 1);
    EXPECT_EQ(core_.status, 0);
    EXPECT_EQ(PADSIZE, c.pad);
    EXPECT_EQ(NETSIZE, c.net);
    EXPECT_EQ(platform().calls, (Lines{"create", "open"}));
    EXPECT_EQ(platform().options.modelPath, c.model);
    EXPECT_EQ(input.shape, (std::vector<int32_t>{1, c.pad, c.pad, 3}));
    EXPECT_EQ(input.tail0, 0);
    EXPECT_EQ(input.tail1, 1);
    EXPECT_EQ(platform().log, (LogLines{{kDebug, c.chosen},
                                        {kDebug, "[MORVALE] qc x7 capture Model init Time 1  status 0 "},
                                        {kDebug, "[MORVALE] qc pal Model init Time 1  status 0 "},
                                        {kDebug, c.sizes}}));
    EXPECT_EQ(printed_, "[MORVALE] qc x7 capture init Time 1 status 0\n");
  }
}

TEST_F(Lifecycle, SetModelHandsOverTheWholeOptionsRecord) {
  core_.Morvale_core_init(&record_);
  load(16);
  const vexa::VexaOptionsV2& o = platform().options;
  EXPECT_EQ((std::vector<int32_t>{o.field1, o.field2, o.field3, o.field11, o.field16, o.field19, o.field20}),
            (std::vector<int32_t>{2, 3, 1, -1, 1, 2, 3}));
  EXPECT_EQ(o.inputNames, Lines{"MobilenetV2/MobilenetV2/input:0"});
  EXPECT_EQ(o.outputNames, Lines{"logits/semantic/BiasAdd:0"});
  EXPECT_TRUE(o.field6.empty() && o.field7.empty() && o.field8.empty() && o.field13.empty() &&
              o.field18.empty());
  EXPECT_TRUE(o.field10.empty() && o.field17.empty());
  EXPECT_FALSE(o.field12 || o.field14);
  EXPECT_EQ(o.field15, 0);
  EXPECT_EQ(std::count(std::begin(o.field21), std::end(o.field21), 0), 24);
}

TEST_F(Lifecycle, OnlyAnOpenResultOfOneIsAFailure) {
  struct Case {
    int32_t opened;
    int result, frame, runs;
  };
  for (const Case& c : {Case{0, 1, 0, 1}, Case{2, 1, -1, 0}, Case{7, 1, 0, 1}, Case{-5, 1, 0, 1}}) {
    core_.Morvale_core_init(&record_);
    platform().open_result = c.opened;
    platform().calls.clear();
    EXPECT_EQ(load(16), c.result);
    EXPECT_EQ(core_.status, c.opened);
    set_frame(256, 256, 100);
    answer(0.0f);
    EXPECT_EQ(core_.Morvale_process(), c.frame) << "open gave " << c.opened;
    EXPECT_EQ(platform().count("execute"), c.runs);
  }
  core_.Morvale_core_init(&record_);
  platform().open_result = 1;
  forget();
  EXPECT_EQ(load(16), -1);
  EXPECT_EQ(core_.status, 1);
  EXPECT_EQ(platform().log, (LogLines{{kDebug, "[Morvale] cameraType  16 in front"},
                                      {kDebug, "[MORVALE] qc x7 capture Model init Time 0  status 1 "},
                                      {kError, "Morvale imprint open Fail ERRROR"}}));
  EXPECT_EQ(printed_, "[MORVALE] qc x7 capture init Time 0 status 1\nMorvale imprint open Fail ERRROR");
}

TEST_F(Lifecycle, ANullSessionIsAFailureAndNothingIsCalledOnIt) {
  core_.Morvale_core_init(&record_);
  platform().null_session = true;
  set_frame(256, 256, 100);
  EXPECT_EQ(load(16), -1);
  EXPECT_FALSE(lines(kError).empty());
  core_.Morvale_process();
  EXPECT_EQ(core_.frameCount, 0u);
  EXPECT_EQ(core_.Morvale_core_deinit(), 1);
  EXPECT_EQ(platform().calls, Lines{"create"});
}

TEST_F(Lifecycle, SetModelAllocatesZeroedBuffers) {
  for (const int camera : {16, 0}) {
    start(camera);
    const auto pixels = static_cast<std::size_t>(PADSIZE * PADSIZE);
    const auto cells = static_cast<std::size_t>(NETSIZE * NETSIZE);
    const auto zeros = [](const auto* data, std::size_t n) {
      return std::count(data, data + n, 0) == static_cast<long>(n);
    };
    EXPECT_TRUE(zeros(core_.resizedFrame, pixels * 3 / 2));
    EXPECT_TRUE(zeros(core_.rgbInput, pixels * 3));
    EXPECT_TRUE(zeros(core_.netInput, pixels * 3));
    EXPECT_TRUE(zeros(core_.gridMap, 855));
    EXPECT_TRUE(zeros(core_.labelMapA, cells));
    EXPECT_TRUE(zeros(core_.labelMapB, cells));
    EXPECT_TRUE(zeros(core_.labelMapWide, cells));
    std::fill(core_.rgbInput, core_.rgbInput + pixels * 3,
              static_cast<uint8_t>(9));  // the next model starts clean
  }
}

// A front map has 64 rows, a back map 32: rows of the one must never be looked for in the other.
TEST_F(Lifecycle, ASecondModelRestartsTheRowsOfTheMap) {
  start(16);
  set_frame(1000, 1000, 100);
  ASSERT_EQ(core_.Morvale_process(), 0);
  ASSERT_EQ(core_.segFactor, 64);
  core_.result.humanRatio = 55;
  load(0);
  EXPECT_EQ(core_.segFactor, 0);
  record_.cameraType = 0;
  std::fill(std::begin(N_segResult_Back), std::end(N_segResult_Back), static_cast<uint8_t>(200));
  EXPECT_EQ(core_.Morvale_core_afterProcss(), 0);
  EXPECT_EQ(core_.result.humanRatio, 0);
}

TEST_F(Lifecycle, DeinitClosesThenDestroysAndKeepsTheBuffers) {
  start(16);
  set_frame(256, 256, 100);
  core_.Morvale_process();
  const vexa::VexaSession* session = session_;
  platform().calls.clear();
  forget();
  EXPECT_EQ(core_.Morvale_core_deinit(), 1);
  EXPECT_EQ(platform().calls, (Lines{"close", "destroy"}));
  EXPECT_EQ(session_, session);
  EXPECT_EQ(inputs.capacity(), 0u);
  EXPECT_EQ(outputs.capacity(), 0u);
  EXPECT_EQ(core_.frameCount, 0u);
  EXPECT_EQ(red(3, 3), 100);
  EXPECT_EQ(platform().log,
            (LogLines{{kDebug, "MORVALE deinit  START_S "}, {kDebug, "MORVALE deinit START_X 0"}}));
}

}  // namespace
