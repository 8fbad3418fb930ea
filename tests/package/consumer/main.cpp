/// A stranger's program: one grey frame through the library, with a runtime of its own that sees a face
/// everywhere.
#include <morvale/checked.h>
#include <morvale/morvale.h>
#include <cstdio>

namespace {

class EverythingIsFace final : public vexa::VexaSession {
 public:
  void reserved1() override {}
  void reserved2() override {}
  void reserved3() override {}
  void reserved6() override {}
  void reserved7() override {}
  void close() override {}
  int32_t open(vexa::VexaOptionsV2) override { return 0; }
  int32_t execute(std::vector<vexa::DataBuffer>&, std::vector<vexa::DataBuffer>& outputs) override {
    const float cell[5] = {-10, -10, 9, -10, -10};
    scores_.clear();
    for (int i = 0; i < 64 * 64; ++i) scores_.insert(scores_.end(), cell, cell + 5);
    outputs.push_back({scores_.data(), {1, 64, 64, 5}});
    return 0;
  }

 private:
  std::vector<float> scores_;
};

}  // namespace

extern "C" vexa::VexaSession* CreateVexaSession() { return new EverythingIsFace; }
extern "C" void DestroyVexaSession(vexa::VexaSession* session) {
  delete static_cast<EverythingIsFace*>(session);
}

int main() {
  std::vector<uint8_t> frame(640 * 480 * 3 / 2, 128);
  MorvaleData_t record{};
  record.cameraType = morvale::kFrontCamera;
  record.width = 640;
  record.height = 480;
  record.yPlane = record.uvPlane = frame.data();

  MorvaleCore core;
  PersonWholeMeta result{};
  const bool analysed = core.Morvale_core_init(&record) == 1 &&
                        core.Morvale_core_setModel(morvale::kFrontCamera) == 1 &&
                        core.Morvale_process() == 0 && core.Morvale_core_afterProcss() == 0 &&
                        core.Morvale_core_getresult(&result) == 1 && core.Morvale_core_deinit() == 1;
  std::printf("ver %d humanRatio %d personCount %d luma %d\n", result.ver, result.humanRatio,
              core.personCount, result.meta[0].faceYavg);
  const bool expected = result.ver == 1 && result.humanRatio == 100 && result.meta[0].faceYavg == 128;
  return analysed && expected ? 0 : 1;
}
