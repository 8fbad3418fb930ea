#pragma once

#include <optional>
#include <string>
#include <vector>

#include "service/camera_service.h"
#include "service/faces.h"
#include "service/frame_crop.h"
#include "service/frame_input.h"

namespace tool {

struct AnalyzeOptions {
  Camera camera = Camera::kFront;
  std::string faces = "auto";
  std::string cascade = kUsualCascade;
  std::optional<std::string> model_dir;
  std::string out;    ///< folder of the annotated pictures; empty: none
  std::string trace;  ///< empty: none
  FrameShape shape;
  std::optional<CropShape> crop;
  int repeat = 1;
  bool table = false;
  bool verbose = false;
  bool keep_going = false;
  std::vector<std::string> inputs;
};

/// Reads the command line of `morvale analyze`. Prints the help and returns nothing when asked for it; throws
/// UsageError.
std::optional<AnalyzeOptions> parse_analyze_options(int argc, char** argv);

}  // namespace tool
