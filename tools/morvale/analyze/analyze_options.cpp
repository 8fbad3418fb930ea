#include "analyze/analyze_options.h"

#include <set>

#include "common/command.h"
#include "common/command_line.h"

namespace tool {
namespace {

constexpr const char* kIntroduction =
    "Sends pictures through Morvale Capture as a camera service does and prints one result record a "
    "frame.\n\n"
    "Each INPUT is a photograph (JPEG, PNG, ...) or a raw NV21 frame (*.nv21). Inputs have nothing to do "
    "with\n"
    "each other: each gets a camera session of its own, so nothing is smoothed from one into the next.\n";

constexpr const char* kExamples = R"(Examples:
  morvale analyze portrait.jpg
      One line of JSON; a cascade plays the camera's face detector.
  morvale analyze --out pictures --format table *.jpg
      A table, and an annotated picture pictures/NAME_front.png for each photograph.
  morvale analyze --camera back --out pictures street.png
      The back camera's analysis: person box, 19 x 15 occupancy grid.
  morvale analyze dump_1920x1080_s2048.nv21
  morvale analyze --size 1920x1080 --stride 2048 dump.nv21
      A raw frame: 1080 luma rows of 2048 bytes, then 540 chroma rows. The library takes the chroma's place
      from the stride but reads rows of exactly `width` bytes, as on a device.
  morvale analyze --repeat 3 portrait.jpg
      The same frame three times through one session: shows the smoothing over time.

A faces file is a list for every input, or an object from base names to lists; frame pixels, at most five:
  [{"x": 100, "y": 80, "w": 120, "h": 120}]
  {"portrait.jpg": [{"x": 100, "y": 80, "w": 120, "h": 120}], "street.png": []}

In the JSON, "record" is the 288-byte record field by field. "personBoxes" are the boxes that the segmentation
found; on the front camera "measuredFaces" counts the faces that the record's first blocks measure.
Boxes are drawn where the library puts them. It scales them by the frame's width on portrait frames too, where
they so come out left of and above what they mean; the label map is drawn where it belongs.

Exit status: 0 done, 1 a model did not open or a frame failed, 2 the command line or a file cannot be used.
)";

/// The raw text of options that need more than CLI11's own conversion.
struct Texts {
  std::string camera = "front", size, format = "json", model_dir;
  int stride = 0;
};

void declare(CLI::App& app, AnalyzeOptions& options, Texts& texts) {
  app.add_option("INPUT", options.inputs, "Photographs and raw NV21 frames")->required()->type_name("");
  app.add_option("--camera", texts.camera, "Whose analysis: front (default) or back")
      ->type_name("front|back")
      ->check(one_of({"front", "back"}));
  app.add_option("--faces", options.faces,
                 "The camera's faces: a JSON file, auto (default: a cascade) or none")
      ->type_name("FILE|auto|none");
  app.add_option("--cascade", options.cascade, "The cascade of --faces auto (default: frontalface_alt2)")
      ->type_name("FILE");
  app.add_option("--model-dir", texts.model_dir,
                 "Folder of the network (default: $VEXA_MODEL_DIR, else ~/.cache/morvale/network)")
      ->type_name("DIR");
  app.add_option("--out", options.out, "Write an annotated PNG a frame into this folder")->type_name("DIR");
  app.add_option("--size", texts.size, "A raw frame's size; photographs are resized to it")->type_name("WxH");
  app.add_option("--stride", texts.stride, "Bytes from one row to the next (default: the width)")
      ->type_name("N")
      ->check(within(2, 1 << 20));
  app.add_option("--repeat", options.repeat, "Send each frame N times through one session (default: 1)")
      ->type_name("N")
      ->check(within(1, 100000));
  app.add_option("--format", texts.format, "One JSON object a frame (default) or a readable table")
      ->type_name("json|table")
      ->check(one_of({"json", "table"}));
  app.add_option("--trace", options.trace, "Write the stages of each frame for Perfetto (ui.perfetto.dev)")
      ->type_name("FILE");
  app.add_flag("--verbose", options.verbose, "Show the library's own messages on standard error");
  app.footer(kExamples);
}

}  // namespace

std::optional<AnalyzeOptions> parse_analyze_options(int argc, char** argv) {
  AnalyzeOptions options;
  Texts texts;
  CLI::App app(kIntroduction, "morvale analyze");
  declare(app, options, texts);
  if (!parse_command_line(app, argc, argv)) return std::nullopt;
  options.camera = texts.camera == "front" ? Camera::kFront : Camera::kBack;
  options.table = texts.format == "table";
  if (app.count("--model-dir") > 0) options.model_dir = texts.model_dir;
  if (app.count("--size") > 0) options.shape.size = parse_size(texts.size);
  if (app.count("--stride") > 0) options.shape.stride = texts.stride;
  if (app.count("--out") > 0 && options.out.empty()) throw UsageError("--out: the folder's name is empty.");
  return options;
}

}  // namespace tool
