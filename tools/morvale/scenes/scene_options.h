#pragma once

#include <optional>
#include <string>

#include "scene/scene.h"
#include "service/camera_service.h"

namespace tool {

struct SceneCommand {
  morvale::scene::SceneOptions scene;
  Camera camera = Camera::kFront;
  int frames = 60;
  std::string out;
  std::string made_by;  ///< the command line that makes the same bundle again
};

/// Reads the command line of `morvale scene`. Prints the help and returns nothing when asked for it; throws
/// UsageError.
std::optional<SceneCommand> parse_scene_options(int argc, char** argv);

}  // namespace tool
