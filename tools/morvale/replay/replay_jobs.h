#pragma once

#include "replay/replay_options.h"

namespace tool {

/// Replays every input in a process of its own, options.jobs at a time; output and words come in the order of
/// the inputs. Returns the highest exit status.
int replay_many(const ReplayOptions& options);

}  // namespace tool
