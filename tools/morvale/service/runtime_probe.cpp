#include "service/runtime_probe.h"

#include <utility>

namespace tool {

RuntimeProbe::RuntimeProbe() : real_(session_) {
  if (real_ != nullptr) session_ = this;
}

RuntimeProbe::~RuntimeProbe() {
  if (real_ != nullptr) session_ = real_;
}

std::optional<NetworkRun> RuntimeProbe::take() { return std::exchange(run_, std::nullopt); }

int32_t RuntimeProbe::execute(std::vector<vexa::DataBuffer>& in, std::vector<vexa::DataBuffer>& out) {
  NetworkRun run;
  run.begin = std::chrono::steady_clock::now();
  run.result = real_->execute(in, out);
  run.end = std::chrono::steady_clock::now();
  if (run.result == 0 && !out.empty() && out.front().data != nullptr) {
    const auto* scores = static_cast<const float*>(out.front().data);
    run.scores.assign(scores, scores + ptrdiff_t{NETSIZE} * NETSIZE * morvale::kLabels);
  }
  run_ = std::move(run);
  return run_->result;
}

}  // namespace tool
