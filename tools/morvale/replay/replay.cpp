/// `morvale replay`: recordings, videos and pictures as one session of the library.

#include "common/command.h"
#include "replay/replay_jobs.h"
#include "replay/replay_options.h"
#include "replay/replay_run.h"

namespace tool {

int replay_main(int argc, char** argv) {
  const std::optional<ReplayOptions> options = parse_replay_options(argc, argv);
  if (!options) return kExitDone;
  return options->inputs.size() > 1 ? replay_many(*options) : replay_one(*options);
}

}  // namespace tool
