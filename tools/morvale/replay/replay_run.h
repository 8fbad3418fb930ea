#pragma once

#include "replay/replay_options.h"

namespace tool {

/// Replays one input through one session of the library and returns the exit status. One call a process: the
/// library keeps its label maps from session to session.
int replay_one(const ReplayOptions& options);

}  // namespace tool
