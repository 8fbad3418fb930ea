/// Records that no sound caller hands over. None may crash the camera service or touch memory that it does
/// not name; the sanitizer build watches that. An unusable frame is a failed frame: -1 and one line at error
/// priority.
#include <climits>
#include <cstring>
#include <functional>
#include <limits>

#include "fakes/core_fixture.h"
#include "fakes/guarded_bytes.h"

namespace {

using fakes::kError;
using fakes::platform;

constexpr Scores kBackground{255, 0, 0, 0, 0};
constexpr Scores kFace{0, 0, 255, 0, 0};

class HostileRecords : public CoreFixture {};

TEST_F(HostileRecords, AnUnusableFrameIsAFailedFrame) {
  struct Case {
    const char* why;
    std::function<void(MorvaleData_t&)> spoil;
  };
  const Case cases[] = {
      {"no luma", [](auto& r) { r.yPlane = nullptr; }},
      {"no chroma", [](auto& r) { r.uvPlane = nullptr; }},
      {"no planes", [](auto& r) { r.yPlane = r.uvPlane = nullptr; }},
      {"width 0", [](auto& r) { r.width = 0; }},
      {"height 0", [](auto& r) { r.height = 0; }},
      {"size 0", [](auto& r) { r.width = r.height = 0; }},
      {"negative width", [](auto& r) { r.width = -256; }},
      {"negative size", [](auto& r) { r.width = r.height = INT_MIN; }},
      {"largest size", [](auto& r) { r.width = r.height = INT_MAX; }},
      {"a product that wraps to 0", [](auto& r) { r.width = r.height = 65'536; }},
      {"a product that wraps to something small", [](auto& r) { r.width = 65'536, r.height = 65'537; }},
      {"one endless row", [](auto& r) { r.width = INT_MAX, r.height = 2; }},
      {"luma fits, chroma leaves 32 bits", [](auto& r) { r.width = 40'000, r.height = 50'000; }},
      {"a stride that leaves 32 bits", [](auto& r) { r.stride = INT_MAX; }},
      {"a negative stride where it has to find the chroma", [](auto& r) { r.stride = -256; }}};
  start(16);
  set_frame(256, 256, 100);
  ASSERT_EQ(run_frame(), 0);
  std::memset(N_segResult_Front, 77, sizeof N_segResult_Front);
  core_.result.humanRatio = 12;
  const MorvaleData_t sound = record_;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.why);
    record_ = sound;
    c.spoil(record_);
    platform().calls.clear();
    forget();
    EXPECT_EQ(core_.Morvale_process(), -1);
    EXPECT_EQ(platform().log.size(), 1u);
    EXPECT_EQ(lines(kError).size(), 1u);
    EXPECT_TRUE(platform().calls.empty());
    EXPECT_EQ(core_.frameCount, 1u);
    EXPECT_EQ(core_.result.humanRatio, 12);
    EXPECT_EQ(std::count(std::begin(N_segResult_Front), std::end(N_segResult_Front), 77), 983'040);
  }
  record_ = sound;
  EXPECT_EQ(run_frame(), 0);
}

TEST_F(HostileRecords, ANullRecordIsAnUnusableFrame) {
  EXPECT_EQ(core_.Morvale_core_init(nullptr), 1);
  testing::internal::CaptureStdout();
  EXPECT_EQ(core_.Morvale_core_setModel(16), 1);
  testing::internal::GetCapturedStdout();
  forget();
  EXPECT_EQ(core_.Morvale_process(), -1);
  EXPECT_EQ(lines(kError).size(), 1u);
  EXPECT_EQ(core_.Morvale_core_afterProcss(), 0);
  PersonWholeMeta out;
  EXPECT_EQ(core_.Morvale_core_getresult(&out), 1);
  EXPECT_EQ(out.ver, 0);
}

TEST_F(HostileRecords, ALostRecordIsAFailedFrame) {
  for (const int camera : {16, 0}) {
    start(camera);
    set_frame(256, 256, 100);
    answer(ScoreMap(NETSIZE, NETSIZE, kFace));
    ASSERT_EQ(run_frame(), 0);
    const PersonWholeMeta before = core_.result;
    core_.inputData = nullptr;
    std::vector<uint8_t> plane(256 * 256 * 3, 255);
    uint8_t* p = plane.data();
    const std::function<void()> calls[] = {
        [&] { EXPECT_EQ(core_.Morvale_process(), -1); },
        [&] { EXPECT_EQ(core_.Morvale_core_afterProcss(), 0); },
        [&] { core_.argMax_human_onlySkin(core_.rgbInput, core_.resizedFrame, p); },
        [&] { core_.argMax_back_only_human(p); },
        [&] { core_.DL_FD_Calc(p, p, p, p, p, p, p, 64, 64, 0); },
        [&] { core_.Intersection_Calc(p, p, p, p, 64, 64); },
        [&] { core_.WriteFaceInfo(p, p, p, p, 64, 0, 0, 64, 0, 64, 0); }};
    for (const auto& call : calls) {
      forget();
      call();
      EXPECT_EQ(platform().log.size(), 1u);
      EXPECT_EQ(lines(kError).size(), 1u);
      EXPECT_EQ(N0, 2);
      EXPECT_EQ(std::memcmp(&core_.result, &before, sizeof before), 0);
    }
  }
}

// The record is the caller's and may change between two calls of one frame.
TEST_F(HostileRecords, ARecordMayBreakBetweenTheCallsOfAFrame) {
  start(16);
  VISUALDEBUG = 1;
  set_frame(256, 256, 100);
  answer(ScoreMap(64, 64, kBackground).paint(20, 15, 20, 20, kFace));
  ASSERT_EQ(core_.Morvale_process(), 0);
  for (const int32_t size : {0, -1, INT_MIN, INT_MAX}) {
    record_.width = record_.height = record_.stride = size;
    record_.yPlane = nullptr;
    record_.faceCount = 1;
    record_.faces[0] = {80, 60, 70, 70};
    core_.Morvale_core_afterProcss();
    N0 = 1;
    EXPECT_EQ(core_.personCount, 1);
    EXPECT_EQ(core_.result.ver, 1);
  }
  start(0);
  VISUALDEBUG = 2;
  set_frame(256, 256, 100);
  answer(ScoreMap(32, 32, kBackground).paint(10, 8, 6, 6, kFace));
  ASSERT_EQ(core_.Morvale_process(), 0);
  for (const int32_t size : {0, -1, INT_MIN, INT_MAX}) {
    record_.width = record_.height = size;
    core_.Morvale_core_afterProcss();
    N0 = 1;
    EXPECT_EQ(core_.personCount, 1);
  }
}

TEST_F(HostileRecords, OnlyFiveFacesAreRead) {
  start(16);
  set_frame(256, 256, 100);
  for (FaceRect& face : record_.faces) face = {10, 10, 40, 40};
  struct Case {
    int32_t count, measured;
  };
  for (const Case& c :
       {Case{-1, 0}, Case{INT_MIN, 0}, Case{5, 5}, Case{6, 5}, Case{7, 5}, Case{INT_MAX, 5}}) {
    record_.faceCount = c.count;
    answer(ScoreMap(64, 64, kBackground));
    core_.frameCount = 0;
    ASSERT_EQ(run_frame(), 0);
    EXPECT_EQ(core_.result.ver, c.measured) << c.count;
    // With a segmented face around all of them the first three are measured.
    answer(ScoreMap(64, 64, kFace));
    core_.frameCount = 0;
    ASSERT_EQ(run_frame(), 0);
    EXPECT_EQ(core_.result.ver, c.measured > 0 ? 3 : 1) << c.count;
  }
}

TEST_F(HostileRecords, RectanglesAtTheEndsOfTheRangeAreTamed) {
  start(16);
  set_frame(256, 256, 100);
  answer(ScoreMap(64, 64, kBackground).paint(20, 15, 20, 20, kFace));
  const int32_t ends[] = {INT_MIN, INT_MIN + 1, -1, 0, 1, 60, INT_MAX - 1, INT_MAX};
  for (const int32_t x : ends)
    for (const int32_t w : ends)
      for (const int32_t other : {INT_MIN, 60, INT_MAX}) {
        record_.faceCount = 4;
        record_.faces[0] = {x, x, w, w};
        record_.faces[1] = {x, other, w, other};
        record_.faces[2] = {other, x, other, w};
        record_.faces[3] = {x, w, x, w};
        core_.frameCount = 0;
        ASSERT_EQ(run_frame(), 0);
        ASSERT_EQ(core_.personCount, 1);
        ASSERT_GE(core_.result.ver, 1);
        ASSERT_LE(core_.result.ver, 3);
      }
}

TEST_F(HostileRecords, ScoresThatAreNoNumbersBecomeZero) {
  for (const int camera : {16, 0}) {
    start(camera);
    set_frame(256, 256, 100);
    answer(std::numeric_limits<float>::quiet_NaN());
    for (int frame = 0; frame < 4; ++frame) ASSERT_EQ(run_frame(), 0);
    const uint8_t* ring = camera == 16 ? N_segResult_Front : N_segResult_Back;
    EXPECT_EQ(std::count(ring, ring + 983'040, 0), 983'040);
    EXPECT_EQ(core_.personCount, 0);
  }
}

/// Rows of one byte hold no chroma pair, but the plane does: the last pair that it has stands in.
TEST_F(HostileRecords, AFrameOneColumnWideIsReadInsideItsPlanes) {
  start(16);
  for (const int height : {4, 5, 1000}) {
    for (const guarded::Edge edge : guarded::kEdges) {
      guarded::GuardedBytes luma(std::vector<uint8_t>(static_cast<size_t>(height), 90), edge);
      guarded::GuardedBytes chroma(std::vector<uint8_t>(static_cast<size_t>(height / 2), 128), edge);
      record_ = {};
      record_.cameraType = 16;
      record_.width = 1;
      record_.height = height;
      record_.yPlane = luma.data();
      record_.uvPlane = chroma.data();
      EXPECT_EQ(core_.Morvale_process(), 0) << height;
    }
  }
}

/// With a chroma pointer of its own a frame is analysed and painted whatever the stride. Where the stride is
/// no row length the plane is the packed one.
TEST_F(HostileRecords, NoStrideLeadsAFrameOutOfItsPlanes) {
  start(16);
  VISUALDEBUG = 1;
  for (const guarded::Edge edge : guarded::kEdges) {
    for (const int stride : {INT_MIN, -256, -1, 0, 1, 100, 255, 256, 257, 300, 1 << 23, 1 << 30, INT_MAX}) {
      const int row = stride > 256 && stride < 1 << 23 ? stride : 256;
      guarded::GuardedBytes luma(std::vector<uint8_t>(static_cast<size_t>(row * 64), 90), edge);
      guarded::GuardedBytes chroma(std::vector<uint8_t>(256 * 32, 128), edge);
      record_ = {};
      record_.cameraType = 16;
      record_.width = 256;
      record_.height = 64;
      record_.stride = stride;
      record_.yPlane = luma.data();
      record_.uvPlane = chroma.data();
      answer(ScoreMap(64, 64, {10, 20, 30, 40, 50}));
      ASSERT_EQ(run_frame(), 0) << stride;
      core_.WriteFaceInfo_HW(nullptr, nullptr, 0, INT_MAX, 0, INT_MAX, 0);
    }
  }
}

/// After-processing follows a failed frame too, and draws at debug level 1: never past what a frame could
/// have.
TEST_F(HostileRecords, TheDebugPaintStaysInsideAnUnusableFrame) {
  start(16);
  VISUALDEBUG = 1;
  set_frame(256, 256, 100);
  ASSERT_EQ(run_frame(), 0);
  const MorvaleData_t sound = record_;
  for (const int stride : {1 << 30, INT_MAX, INT_MIN}) {
    record_ = sound;
    record_.stride = stride;
    EXPECT_EQ(run_frame(), -1) << stride;
  }
  record_ = sound;
  record_.height = INT_MAX;
  EXPECT_EQ(run_frame(), -1);
}

}  // namespace
