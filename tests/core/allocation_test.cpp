/// How often the library allocates: once in Morvale_process in the steady state, for the copy of the input's
/// shape. And what becomes of each allocation that fails. An executable of its own, since it replaces
/// operator new.
#include <gtest/gtest.h>

#include <sys/time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <functional>
#include <new>
#include <vector>

#include <morvale/morvale.h>

namespace {

bool counting = false;
int allocations = 0;
int to_fail = 0;  ///< which of the counted allocations fails; 0: none
long living = 0;  ///< blocks of the whole process
int sessions = 0;

/// Its own allocations are the runtime's business and not counted.
class QuietSession final : public vexa::VexaSession {
 public:
  void reserved1() override {}
  void reserved2() override {}
  void reserved3() override {}
  void reserved6() override {}
  void reserved7() override {}
  void close() override {}
  int32_t open(vexa::VexaOptionsV2) override { return 0; }
  int32_t execute(std::vector<vexa::DataBuffer>&, std::vector<vexa::DataBuffer>& outputs) override {
    const bool was_counting = counting;
    counting = false;
    scores_.resize(64 * 64 * 5, -10.0f);
    for (int y = 8; y < 20; ++y) {  // a face
      for (int x = 8; x < 20; ++x) scores_[static_cast<size_t>((y * NETSIZE + x) * 5 + 2)] = 10.0f;
    }
    outputs.push_back({scores_.data(), {1, NETSIZE, NETSIZE, 5}});
    counting = was_counting;
    return 0;
  }

 private:
  std::vector<float> scores_;
};

TEST(Allocation, ProcessAllocatesOnlyTheCopyOfTheInputShape) {
  std::vector<uint8_t> frame(640 * 480 * 3 / 2, 90);
  for (const int camera : {16, 0}) {
    MorvaleData_t record{};
    record.cameraType = camera;
    record.width = 640;
    record.height = 480;
    record.yPlane = record.uvPlane = frame.data();
    MorvaleCore core;
    core.Morvale_core_init(&record);
    core.Morvale_core_setModel(camera);
    for (int i = 0; i < 5; ++i) {
      allocations = 0;
      counting = true;
      const int result = core.Morvale_process();
      counting = false;
      EXPECT_EQ(result, 0);
      // The first frame also gives the lists their storage.
      EXPECT_TRUE(i == 0 || allocations == 1) << allocations << " in frame " << i << ", camera " << camera;
      core.Morvale_core_afterProcss();
    }
    core.Morvale_core_deinit();
  }
}

/// A session of every entry point that may allocate, and what it leaves.
class Session {
 public:
  explicit Session(int camera) : frame_(640 * 480 * 3 / 2, 90) {
    record_.cameraType = camera;
    record_.width = 640;
    record_.height = 480;
    record_.yPlane = record_.uvPlane = frame_.data();
    record_.faceCount = 1;
    record_.faces[0] = {60, 50, 200, 200};
    calls_ = {[&] { return core_.Morvale_core_init(&record_); },
              [&] { return core_.Morvale_core_setModel(record_.cameraType); }};
    for (int i = 0; i < 4; ++i) {
      calls_.emplace_back([&] { return core_.Morvale_process(); });
      calls_.emplace_back([&] { return core_.Morvale_core_afterProcss(); });
    }
    calls_.emplace_back([&] { return core_.Morvale_core_getresult(&left.result), human_boxes(); });
    calls_.emplace_back([&] { return core_.Morvale_core_deinit(); });
  }

  /// Makes all calls, one that throws once more. Returns how many threw.
  int run() {
    int thrown = 0;
    for (const auto& call : calls_) {
      const auto make = [&] {
        counting = true;
        const int status = call();
        counting = false;
        left.statuses.push_back(status);
      };
      try {
        make();
      } catch (const std::bad_alloc&) {
        counting = false;
        ++thrown;
        make();
      }
    }
    return thrown;
  }

  struct Left {
    std::vector<int> statuses;
    PersonWholeMeta result{};
    FaceRect box{};
    bool operator==(const Left& other) const {
      return statuses == other.statuses && std::memcmp(&result, &other.result, sizeof result) == 0 &&
             std::memcmp(&box, &other.box, sizeof box) == 0;
    }
  } left;

 private:
  /// The one allocating call that no camera makes.
  int human_boxes() {
    uint8_t* p = frame_.data();
    core_.DL_Human_Calc(p, p + 4096, p, p + 4096, p, p, nullptr, nullptr, mask_, 64, 48, 1);
    left.box = core_.personBoxes[0];
    return core_.personCount;
  }

  std::vector<uint8_t> frame_;
  uint8_t mask_[64 * 48] = {};
  MorvaleData_t record_{};
  MorvaleCore core_;
  std::vector<std::function<int()>> calls_;
};

/// A call that throws has changed nothing for the next one: made again it does what it would have done, and
/// the session ends with the same words, no block and no runtime session left behind.
TEST(Allocation, AfterEachOneThatFailsTheSessionGoesOn) {
  for (const int camera : {16, 0}) {
    Session warm(camera);
    EXPECT_EQ(warm.run(), 0);
    for (to_fail = 1;; ++to_fail) {
      const long before = living;
      int thrown = 0;
      {
        Session session(camera);
        allocations = 0;
        thrown = session.run();
        EXPECT_TRUE(session.left == warm.left) << "allocation " << to_fail << ", camera " << camera;
      }
      EXPECT_EQ(living, before) << "allocation " << to_fail << ", camera " << camera;
      EXPECT_EQ(sessions, 0) << "allocation " << to_fail << ", camera " << camera;
      sessions = 0;
      if (thrown == 0) break;
    }
    EXPECT_GT(to_fail, 10);
    to_fail = 0;
  }
}

/// Pages of the process that are in memory, in KiB.
long resident_kib() {
  long all = 0, resident = 0;
  std::ifstream("/proc/self/statm") >> all >> resident;
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

/// Short sessions of small frames, front and back in turn: MORVALE_SOAK_FRAMES of them, a line of
/// MORVALE_SOAK_LOG for every 200th part. After the first thousand nothing grows.
TEST(Allocation, MemoryIsFlatOverManySessions) {
  constexpr int kSession = 250, kSettled = 1000;
#if defined(SANITIZED)  // which keeps what was freed
  constexpr long kGrowth = 1 << 20;
#else
  constexpr long kGrowth = 256;
#endif
  const char* wish = std::getenv("MORVALE_SOAK_FRAMES");
  const char* log_name = std::getenv("MORVALE_SOAK_LOG");
  const int frames = wish != nullptr ? std::atoi(wish) : 5000;
  std::ofstream log(log_name != nullptr ? log_name : "/dev/null");
  std::vector<uint8_t> frame(64 * 48 * 3 / 2, 90);
  MorvaleData_t record{};
  record.width = 64;
  record.height = 48;
  record.yPlane = record.uvPlane = frame.data();
  long settled = 0, blocks = 0;
  for (int done = 0; done < frames; done += kSession) {
    record.cameraType = done / kSession % 2 == 0 ? 16 : 0;
    MorvaleCore core;
    core.Morvale_core_init(&record);
    core.Morvale_core_setModel(record.cameraType);
    for (int i = 0; i < kSession; ++i) {
      frame[static_cast<size_t>(i)] ^= 1;
      allocations = 0;
      counting = true;
      const int result = core.Morvale_process();
      core.Morvale_core_afterProcss();
      counting = false;
      ASSERT_EQ(result, 0);
      ASSERT_TRUE(i == 0 || allocations == 1) << allocations << " in frame " << done + i;
    }
    core.Morvale_core_deinit();
    if (done < kSettled) {
      settled = resident_kib();
      blocks = living;
    }
    ASSERT_LE(resident_kib() - settled, kGrowth) << "KiB more after " << done << " frames";
    ASSERT_EQ(living, blocks) << "blocks after " << done << " frames";
    if (done / kSession % std::max(1, frames / kSession / 200) == 0)
      log << done << "," << resident_kib() << "\n";
  }
}

}  // namespace

// Not inlined: GCC would see malloc behind new and free behind delete, and take the pair for a mistake.
#define MORVALE_REPLACED __attribute__((noinline))
MORVALE_REPLACED void* operator new(std::size_t size) {
  allocations += counting;
  const bool fails = counting && allocations == to_fail;
  if (void* memory = fails ? nullptr : std::malloc(size)) return ++living, memory;
  throw std::bad_alloc();
}
MORVALE_REPLACED void* operator new[](std::size_t size) { return operator new(size); }
MORVALE_REPLACED void operator delete(void* memory) noexcept {
  living -= memory != nullptr;
  std::free(memory);
}
MORVALE_REPLACED void operator delete[](void* memory) noexcept { operator delete(memory); }
MORVALE_REPLACED void operator delete(void* memory, std::size_t) noexcept { operator delete(memory); }
MORVALE_REPLACED void operator delete[](void* memory, std::size_t) noexcept { operator delete(memory); }

extern "C" {
vexa::VexaSession* CreateVexaSession() {
  static QuietSession session;
  ++sessions;
  return &session;
}
void DestroyVexaSession(vexa::VexaSession*) { --sessions; }
/// Stands still: a run that the machine holds up is logged, and the log allocates.
int gettimeofday(timeval* now, void*) noexcept {
  *now = {};
  return 0;
}
}
