/// The runtime session: opened, run and closed here and nowhere else. The exported session_ keeps the pointer
/// of a session after its end, because callers look at it; which session was destroyed is remembered here, so
/// that it is neither run nor closed again. A session that a caller puts into session_ is served.
#pragma once

#include <cstdint>

#include <morvale/core/vexa_runtime.h>

namespace morvale {

/// Creates a session and opens it. Returns what open returned, kOpenFailed when there is no session.
constexpr int32_t kOpenFailed = 1;
int32_t open_session(vexa::VexaOptionsV2 options);

/// Runs the session on `pixels`. Returns the scores of all NETSIZE x NETSIZE cells, or null when the run
/// failed, left no scores or too few. The scores are the runtime's memory and outlive the descriptors.
const float* run_session(float* pixels);

/// Closes and destroys the session. Nothing happens when there is none any more.
void close_session();

}  // namespace morvale
