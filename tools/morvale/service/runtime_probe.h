/// Watches the neural runtime from the library's side.
#pragma once

#include <chrono>
#include <optional>
#include <vector>

#include "service/session_stub.h"

namespace tool {

/// What one run of the network took and gave.
struct NetworkRun {
  using Time = std::chrono::steady_clock::time_point;
  int32_t result = 0;  ///< what execute returned
  Time begin, end;
  std::vector<float> scores;  ///< empty when the run gave none

  double ms() const { return std::chrono::duration<double, std::milli>(end - begin).count(); }
};

/// Stands before the runtime's session while it lives and notes what passes. The library calls whatever
/// session_ points at; its own session is put back at the end, so let the probe end before the core.
class RuntimeProbe final : public SessionStub {
 public:
  RuntimeProbe();
  ~RuntimeProbe();
  RuntimeProbe(const RuntimeProbe&) = delete;
  RuntimeProbe& operator=(const RuntimeProbe&) = delete;

  /// The last run, if there was one since the last call.
  std::optional<NetworkRun> take();

  int32_t execute(std::vector<vexa::DataBuffer>& in, std::vector<vexa::DataBuffer>& out) override;

 private:
  vexa::VexaSession* real_;
  std::optional<NetworkRun> run_;
};

}  // namespace tool
