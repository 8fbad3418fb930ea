#include "core/session.h"

#include <utility>

#include <morvale/core/globals.h>
#include "core/scores.h"
#include "platform/clock.h"
#include "platform/log.h"
#include "platform/trace.h"

// The runtime is closed and its classes are unknown here, so a build whose virtual calls are checked against
// the known ones (clang's cfi-vcall) would end at the first frame. The three functions that call into its
// table are exempt.
#if defined(__clang__)
#define MORVALE_CALLS_RUNTIME __attribute__((no_sanitize("cfi-vcall")))
#else
#define MORVALE_CALLS_RUNTIME
#endif

namespace morvale {
namespace {

/// A network run may take 30 ms; from this many whole milliseconds on it is logged as sluggish.
constexpr int64_t kSluggishRunMs = 31;

const vexa::VexaSession* destroyed = nullptr;

vexa::VexaSession* live_session() { return session_ != destroyed ? session_ : nullptr; }

void empty_lists() {
  inputs.clear();
  outputs.clear();
}

}  // namespace

MORVALE_CALLS_RUNTIME int32_t open_session(vexa::VexaOptionsV2 options) {
  session_ = CreateVexaSession();
  destroyed = nullptr;  // the runtime may have given the same address again
  return session_ != nullptr ? session_->open(std::move(options)) : kOpenFailed;
}

MORVALE_CALLS_RUNTIME const float* run_session(float* pixels) {
  const TraceMark mark("Morvale network");
  const WallTime start = wall_time();
  input.data = pixels;
  empty_lists();
  inputs.push_back(input);
  vexa::VexaSession* const session = live_session();
  const bool done = session != nullptr && session->execute(inputs, outputs) == 0;
  const int64_t needed = int64_t{NETSIZE} * NETSIZE * kLabels;
  if (!done || outputs.empty() || !holds_all_scores(outputs.front(), needed)) {
    empty_lists();
    MORVALE_ERROR("Morvale vexa execute  fail");
    return nullptr;
  }
  const auto* scores = static_cast<const float*>(outputs.front().data);
  if (elapsed_ms(start, wall_time()) >= kSluggishRunMs) {
    MORVALE_ERROR("Morvale frame dealy sluggish ->  disable");
    empty_lists();
  }
  return scores;
}

MORVALE_CALLS_RUNTIME void close_session() {
  vexa::VexaSession* const session = live_session();
  if (session == nullptr) return;
  destroyed = session;
  session->close();
  DestroyVexaSession(session);
}

}  // namespace morvale
