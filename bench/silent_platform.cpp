#include "bench/silent_platform.h"

#include <utility>

#include <morvale/core/vexa_runtime.h>
#include "platform/log.h"
#include "platform/properties.h"

namespace bench {
namespace {

std::vector<float>& answer() {
  static std::vector<float> scores;
  return scores;
}

class ScriptedSession final : public vexa::VexaSession {
 public:
  void reserved1() override {}
  void reserved2() override {}
  void reserved3() override {}

  // The tensor comes without its shape, which nobody reads and which would cost an allocation a run.
  int32_t execute(std::vector<vexa::DataBuffer>&, std::vector<vexa::DataBuffer>& outputs) override {
    outputs.emplace_back().data = answer().data();
    return 0;
  }

  void close() override {}
  void reserved6() override {}
  void reserved7() override {}
  int32_t open(vexa::VexaOptionsV2) override { return 0; }
};

}  // namespace

void answer_with(std::vector<float> scores) { answer() = std::move(scores); }

}  // namespace bench

int __android_log_print(int, const char*, const char*, ...) { return 0; }

int __system_property_get(const char*, char* value) {
  *value = '\0';
  return 0;
}

vexa::VexaSession* CreateVexaSession() {
  static bench::ScriptedSession session;
  return &session;
}

void DestroyVexaSession(vexa::VexaSession*) {}
