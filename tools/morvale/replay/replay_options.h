#pragma once

#include <optional>
#include <string>
#include <vector>

#include "service/camera_service.h"
#include "service/faces.h"
#include "service/frame_crop.h"
#include "sources/frame_source.h"

namespace tool {

enum class LineFormat { kJson, kCsv, kRecords, kNone };

struct ReplayOptions {
  std::vector<std::string> inputs;
  std::string pan;  ///< a photograph; empty: the inputs are replayed
  FrameShape shape;
  std::optional<CropShape> crop;

  int start = 0, every = 1, repeat = 1;
  std::optional<int> frames;

  std::optional<Camera> camera;
  std::optional<float> gate;
  bool udc = false;
  std::optional<int> debug_level;
  std::string engine = "auto";
  std::string faces = "auto";
  std::string cascade = kUsualCascade;
  std::optional<std::string> model_dir;

  std::string record, report, trace;  ///< empty: not wanted
  std::string picture;                ///< a file for picture_frame, annotated; empty: not wanted
  int picture_frame = 0;
  LineFormat format = LineFormat::kJson;
  bool heading = true;  ///< CSV begins with the names of its columns
  bool times = false;
  bool verbose = false;
  bool keep_going = false;
  int jobs = 1;

  std::string command_line;  ///< as it was typed
};

/// Reads the command line of `morvale replay`. Prints the help and returns nothing when asked for it; throws
/// UsageError.
std::optional<ReplayOptions> parse_replay_options(int argc, char** argv);

}  // namespace tool
