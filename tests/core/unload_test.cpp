/// A service that loads the library at run time can unload it again: neither a thread's memory nor anything
/// else pins it. An executable of its own, which is not linked to the library.
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <thread>
#include <vector>

#include <morvale/core/morvale_core.h>
#include <morvale/core/vexa_runtime.h>

namespace {

constexpr const char* kLibrary = CAPTURE_LIBRARY;

class FaceEverywhere final : public vexa::VexaSession {
 public:
  void reserved1() override {}
  void reserved2() override {}
  void reserved3() override {}
  void reserved6() override {}
  void reserved7() override {}
  void close() override {}
  int32_t open(vexa::VexaOptionsV2) override { return 0; }
  int32_t execute(std::vector<vexa::DataBuffer>&, std::vector<vexa::DataBuffer>& outputs) override {
    scores_.assign(64 * 64 * 5, -9.0f);
    for (std::size_t i = 2; i < scores_.size(); i += 5) scores_[i] = 9.0f;
    outputs.push_back({scores_.data(), {1, 64, 64, 5}});
    return 0;
  }

 private:
  std::vector<float> scores_;
};

/// A member function of MorvaleCore by its linker name: on every platform of ours `this` is the first
/// argument.
template <class Result, class... Arguments>
auto method(void* library, const char* name) {
  void* const address = dlsym(library, name);
  EXPECT_NE(address, nullptr) << name;
  return reinterpret_cast<Result (*)(void*, Arguments...)>(address);
}

void run_session(void* library) {
  std::vector<uint8_t> frame(640 * 480 * 3 / 2, 90);
  MorvaleData_t record{};
  record.cameraType = morvale::kFrontCamera;
  record.width = 640;
  record.height = 480;
  record.yPlane = record.uvPlane = frame.data();
  alignas(MorvaleCore) std::byte core[sizeof(MorvaleCore)];
  method<void>(library, "_ZN11MorvaleCoreC1Ev")(core);
  method<int, MorvaleData_t*>(library, "_ZN11MorvaleCore17Morvale_core_initEP13MorvaleData_t")(core, &record);
  method<int, int>(library, "_ZN11MorvaleCore21Morvale_core_setModelEi")(core, morvale::kFrontCamera);
  EXPECT_EQ(method<int>(library, "_ZN11MorvaleCore15Morvale_processEv")(core), 0);
  method<int>(library, "_ZN11MorvaleCore24Morvale_core_afterProcssEv")(core);
  PersonWholeMeta result{};
  method<int, PersonWholeMeta*>(library, "_ZN11MorvaleCore22Morvale_core_getresultEP15PersonWholeMeta")(
      core, &result);
  EXPECT_EQ(result.humanRatio, 100);
  method<int>(library, "_ZN11MorvaleCore19Morvale_core_deinitEv")(core);
  method<void>(library, "_ZN11MorvaleCoreD1Ev")(core);
}

TEST(Unload, TheLibraryGoesWhileTheThreadsThatCalledItLive) {
  for (int round = 0; round < 2; ++round) {
    void* library = dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL);
    ASSERT_NE(library, nullptr) << dlerror();
    std::thread([&] { run_session(library); }).join();
    run_session(library);
    EXPECT_EQ(dlclose(library), 0);
    EXPECT_EQ(dlopen(kLibrary, RTLD_NOW | RTLD_NOLOAD), nullptr) << "still loaded";
  }
}

}  // namespace

extern "C" {
int __android_log_print(int, const char*, const char*, ...);
int __android_log_print(int, const char*, const char*, ...) { return 0; }
int __system_property_get(const char*, char*);
int __system_property_get(const char*, char*) { return 0; }
vexa::VexaSession* CreateVexaSession() { return new FaceEverywhere; }
void DestroyVexaSession(vexa::VexaSession* session) { delete static_cast<FaceEverywhere*>(session); }
}
