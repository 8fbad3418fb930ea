#include "analyze/analyze_options.h"

#include "common/command.h"
#include "common/options.h"

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
      A table, an annotated picture pictures/NAME_front.png for each photograph, and pictures/index.html with all.
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
Boxes are drawn where the library puts them, the label map where it belongs. "notes" say where the frame's shape
misleads: boxes of portrait frames lie left of and above what they mean, and of landscape frames other than 4:3 and
16:9 the lowest rows are not analysed (hatched in the picture). --crop cuts a frame of a better shape out: the
largest part, from the middle of the width and a third down the height.

Exit status: 0 done, 1 a model did not open or a frame failed, 2 the command line or a file cannot be used.
)";

/// What the options say, before it is looked at closer.
struct Texts {
  std::string camera = "front", format = "json";
  std::optional<std::string> size, crop;
};

CommandLine command_line(AnalyzeOptions& options, Texts& texts) {
  return {
      "morvale analyze",
      kIntroduction,
      kExamples,
      {{"INPUT", &options.inputs, "Photographs and raw NV21 frames", "", Required()},
       {"--camera", &texts.camera, "Whose analysis: front (default) or back", "front|back"},
       {"--faces", &options.faces, "The camera's faces: a JSON file, auto (default: a cascade) or none",
        "FILE|auto|none"},
       {"--cascade", &options.cascade, "The cascade of --faces auto (default: frontalface_alt2)", "FILE"},
       {"--model-dir", &options.model_dir,
        "Folder of the network (default: $VEXA_MODEL_DIR, else ~/.cache/morvale/network)", "DIR"},
       {"--out", &options.out,
        "Write an annotated PNG a frame into this folder; of several inputs an index.html too", "DIR"},
       {"--size", &texts.size, "A raw frame's size; photographs are resized to it", "WxH"},
       {"--crop", &texts.crop, "Cut this shape out of every frame: the library takes no other shape whole",
        "4:3|16:9"},
       {"--stride", &options.shape.stride, "Bytes from one row to the next (default: the width)", "N",
        Range{2, 1 << 20}},
       {"--repeat", &options.repeat, "Send each frame N times through one session (default: 1)", "N",
        Range{1, 100000}},
       {"--format", &texts.format, "One JSON object a frame (default) or a readable table", "json|table"},
       {"--trace", &options.trace, "Write the stages of each frame for Perfetto (ui.perfetto.dev)", "FILE"},
       {"--keep-going", &options.keep_going, "Leave out inputs that cannot be read, and tell of them"},
       {"--verbose", &options.verbose, "Show the library's own messages on standard error"}}};
}

}  // namespace

std::optional<AnalyzeOptions> parse_analyze_options(int argc, char** argv) {
  AnalyzeOptions options;
  Texts texts;
  const auto given = parse_options(command_line(options, texts), argc, argv);
  if (!given) return std::nullopt;
  options.camera = texts.camera == "front" ? Camera::kFront : Camera::kBack;
  options.table = texts.format == "table";
  if (texts.size) options.shape.size = parse_size(*texts.size);
  if (texts.crop) options.crop = parse_crop(*texts.crop);
  if (given->contains("--out") && options.out.empty()) throw UsageError("--out: the folder's name is empty.");
  return options;
}

}  // namespace tool
