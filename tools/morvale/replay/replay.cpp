/// `morvale replay`: recordings, videos and pictures as one session of the library.
#include <opencv2/core/utils/logger.hpp>

#include "common/command.h"
#include "replay/replay_jobs.h"
#include "replay/replay_options.h"
#include "replay/replay_run.h"

namespace tool {

int replay_main(int argc, char** argv) {
  const std::optional<ReplayOptions> options = parse_replay_options(argc, argv);
  if (!options) return kExitDone;
  // OpenCV's own complaints would stand beside our one sentence.
  cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
  return options->inputs.size() > 1 ? replay_many(*options) : replay_one(*options);
}

}  // namespace tool
