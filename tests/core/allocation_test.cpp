/// How often the library allocates: once in Morvale_process in the steady state, for the copy of the input's
/// shape. An executable of its own, since it replaces operator new.
#include <gtest/gtest.h>

#include <cstdlib>
#include <new>
#include <vector>

#include <morvale/morvale.h>

namespace {

bool counting = false;
int allocations = 0;

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
    scores_.resize(64 * 64 * 5, 1.0f);
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

}  // namespace

// Not inlined: GCC would see malloc behind new and free behind delete, and take the pair for a mistake.
#define MORVALE_REPLACED __attribute__((noinline))
MORVALE_REPLACED void* operator new(std::size_t size) {
  allocations += counting;
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
MORVALE_REPLACED void* operator new[](std::size_t size) { return operator new(size); }
MORVALE_REPLACED void operator delete(void* memory) noexcept { std::free(memory); }
MORVALE_REPLACED void operator delete[](void* memory) noexcept { std::free(memory); }
MORVALE_REPLACED void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
MORVALE_REPLACED void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

extern "C" {
vexa::VexaSession* CreateVexaSession() {
  static QuietSession session;
  return &session;
}
void DestroyVexaSession(vexa::VexaSession*) {}
}
