#include "selfcheck/camera.h"

#include <algorithm>
#include <utility>

namespace morvale::selfcheck {
namespace {

class ScriptedSession final : public vexa::VexaSession {
 public:
  void reserved1() override {}
  void reserved2() override {}
  void reserved3() override {}
  int32_t execute(std::vector<vexa::DataBuffer>&, std::vector<vexa::DataBuffer>& outputs) override {
    outputs.push_back({scores.data(), {1, NETSIZE, NETSIZE, morvale::kLabels}, 0, 0});
    return 0;
  }
  void close() override {}
  void reserved6() override {}
  void reserved7() override {}
  int32_t open(vexa::VexaOptionsV2) override { return 0; }

  std::vector<float> scores;
};

ScriptedSession& scripted_session() {
  static ScriptedSession session;
  return session;
}

}  // namespace

Camera::Camera(int camera_type) {
  std::fill(std::begin(N_segResult_Front), std::end(N_segResult_Front), uint8_t{0});
  std::fill(std::begin(N_segResult_Back), std::end(N_segResult_Back), uint8_t{0});
  record.cameraType = camera_type;
  core.Morvale_core_init(&record);
  VISUALDEBUG = 0;
  core.Morvale_core_setModel(camera_type);
  platform_session_ = std::exchange(session_, &scripted_session());
  core.status = 0;
}

Camera::~Camera() {
  session_ = platform_session_;
  core.Morvale_core_deinit();
}

void Camera::take(Bytes nv21, int width, int height) {
  frame = std::move(nv21);
  record.width = width;
  record.height = height;
  record.yPlane = record.uvPlane = frame.data();
}

void Camera::answer_with(std::vector<float> scores) { scripted_session().scores = std::move(scores); }

int Camera::run_frame() {
  PersonWholeMeta copy;
  const int status = core.Morvale_process();
  core.Morvale_core_afterProcss();
  core.Morvale_core_getresult(&copy);
  return status;
}

void Sheet::add_results(const MorvaleCore& core) {
  add("ver", core.result.ver);
  add("humanRatio", core.result.humanRatio);
  for (const PersonMeta& meta : core.result.meta) {
    add("brightCount", meta.brightCount);
    add("faceYavg", meta.faceYavg);
    add("hsvMin", meta.hsvMin);
    add("hsv", meta.hsv);
    add("skinRatio", meta.skinRatio);
    add("box", meta.box);
  }
  add("personCount", core.personCount);
  add("personBoxes", core.personBoxes);
}

void Sheet::append_to(Figures& figures, const std::string& title) const {
  for (const auto& [name, digest] : digests_) figures.push_back({title + ": " + name, digest.value()});
}

Digest& Sheet::digest(const char* name) {
  const auto found =
      std::find_if(digests_.begin(), digests_.end(), [&](const auto& d) { return d.first == name; });
  return found != digests_.end() ? found->second : digests_.emplace_back(name, Digest()).second;
}

}  // namespace morvale::selfcheck
