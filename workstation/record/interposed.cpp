/// The functions that stand ahead of the library's and the runtime's. Each tells the recorder and calls the
/// next definition of itself; arguments and results pass unchanged.
#include <chrono>
#include <memory>
#include <utility>
#include <vector>

#include <morvale/core/export.h>
#include <morvale/core/globals.h>
#include <morvale/core/morvale_core.h>
#include <morvale/core/vexa_runtime.h>
#include "core/scores.h"
#include "record/next_symbol.h"
#include "record/recorder.h"

namespace morvale::record {
namespace {

/// What a method of the core answers when there is no library behind.
constexpr int kNoLibrary = -1;

/// Stands in front of the runtime's session.
class RecordingSession final : public vexa::VexaSession {
 public:
  explicit RecordingSession(vexa::VexaSession* real) : real_(real) {}
  vexa::VexaSession* real() const { return real_; }

  void reserved1() override { real_->reserved1(); }
  void reserved2() override { real_->reserved2(); }
  void reserved3() override { real_->reserved3(); }
  void reserved6() override { real_->reserved6(); }
  void reserved7() override { real_->reserved7(); }
  void close() override { real_->close(); }
  int32_t open(vexa::VexaOptionsV2 options) override { return real_->open(std::move(options)); }

  int32_t execute(std::vector<vexa::DataBuffer>& inputs, std::vector<vexa::DataBuffer>& outputs) override {
    using Clock = std::chrono::steady_clock;
    const int32_t pad_size = !inputs.empty() && inputs[0].shape.size() == 4 ? inputs[0].shape[1] : 0;
    const Clock::time_point start = Clock::now();
    const int32_t result = real_->execute(inputs, outputs);
    const std::chrono::duration<double, std::milli> elapsed = Clock::now() - start;
    const int64_t side = pad_size / 4;
    const bool gave_scores =
        result == 0 && !outputs.empty() && morvale::holds_all_scores(outputs[0], side * side * kLabels);
    recorder().executed(result, gave_scores ? static_cast<const float*>(outputs[0].data) : nullptr, pad_size,
                        elapsed.count());
    return result;
  }

 private:
  vexa::VexaSession* real_;
};

/// The sessions handed out and not yet destroyed. DestroyVexaSession may also be given one that was not made
/// here.
std::vector<std::unique_ptr<RecordingSession>>& sessions() {
  static auto* const list = new std::vector<std::unique_ptr<RecordingSession>>;
  return *list;
}

vexa::VexaSession* unwrap(vexa::VexaSession* session) {
  auto& list = sessions();
  for (auto at = list.begin(); at != list.end(); ++at) {
    if (at->get() != session) continue;
    vexa::VexaSession* real = (*at)->real();
    list.erase(at);
    return real;
  }
  return session;
}

/// Calls the next definition of a method of the core.
template <class... Arguments>
int call_next(void* method, MorvaleCore* core, Arguments... arguments) {
  if (method == nullptr) return kNoLibrary;
  return reinterpret_cast<int (*)(MorvaleCore*, Arguments...)>(method)(core, arguments...);
}

}  // namespace
}  // namespace morvale::record

using namespace morvale::record;

extern "C" MORVALE_API vexa::VexaSession* CreateVexaSession() {
  static void* const next = next_symbol("CreateVexaSession");
  if (next == nullptr) return nullptr;
  vexa::VexaSession* real = reinterpret_cast<decltype(&CreateVexaSession)>(next)();
  if (real == nullptr) return nullptr;
  return sessions().emplace_back(std::make_unique<RecordingSession>(real)).get();
}

extern "C" MORVALE_API void DestroyVexaSession(vexa::VexaSession* session) {
  static void* const next = next_symbol("DestroyVexaSession");
  session = unwrap(session);
  if (next != nullptr) reinterpret_cast<decltype(&DestroyVexaSession)>(next)(session);
}

int MorvaleCore::Morvale_core_init(MorvaleData_t* data) {
  static void* const next = next_symbol("_ZN11MorvaleCore17Morvale_core_initEP13MorvaleData_t");
  recorder().session_begins(*this);
  return call_next(next, this, data);
}

int MorvaleCore::Morvale_process() {
  static void* const next = next_symbol("_ZN11MorvaleCore15Morvale_processEv");
  recorder().frame_begins(*this);
  const int answer = call_next(next, this);
  recorder().processed(answer);
  return answer;
}

int MorvaleCore::Morvale_core_afterProcss() {
  static void* const next = next_symbol("_ZN11MorvaleCore24Morvale_core_afterProcssEv");
  recorder().analysis_begins(*this);
  return call_next(next, this);
}

int MorvaleCore::Morvale_core_getresult(PersonWholeMeta* out) {
  static void* const next = next_symbol("_ZN11MorvaleCore22Morvale_core_getresultEP15PersonWholeMeta");
  const int answer = call_next(next, this, out);
  recorder().frame_ends(*this, *out);
  return answer;
}

int MorvaleCore::Morvale_core_deinit() {
  static void* const next = next_symbol("_ZN11MorvaleCore19Morvale_core_deinitEv");
  recorder().session_ends(*this);
  return call_next(next, this);
}
