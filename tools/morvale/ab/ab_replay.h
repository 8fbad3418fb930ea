/// One recording through one build of the library.
#pragma once

#include <string>
#include <vector>

#include "service/camera_service.h"

namespace tool {

/// What a replay left.
struct AbReplay {
  std::vector<PersonWholeMeta> records;
  std::string failure;  ///< why there are not all of them; empty: there are
};

/// Throws UsageError where `library` is none that this machine loads.
void check_library(const std::string& library);

/// Replays the recording in a process of its own, which loads `library` in place of the program's own.
/// `frames`: how many records there must be. Throws RunError where no process or file can be made.
AbReplay replay_through(const std::string& library, const std::string& recording, int frames);

}  // namespace tool
