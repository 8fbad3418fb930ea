#include "replay/replay_options.h"

#include <charconv>

#include "common/command.h"
#include "common/command_line.h"
#include "common/options.h"

namespace tool {
namespace {

constexpr const char* kIntroduction =
    "Sends recordings, videos or folders of pictures through one session of the library, frame by frame, as "
    "a\n"
    "camera does, and prints one result record a frame. A recording answers for the network itself: it "
    "needs\n"
    "neither network nor phone, and its records must come out as they were recorded.\n";

constexpr const char* kExamples =
    R"(An INPUT is a recording (a folder with session.json, or a *.morvale file), a folder of pictures (in the order of their names), a video,
a YUV4MPEG2 stream (*.y4m, or - for standard input) or a single picture.

Examples:
  morvale replay session-0001
      Every record, as JSON lines; exit status 1 when one is not as it was recorded.
  morvale replay --report out session-0001
      The same, and out/report.html to look at: timelines, every frame with its label map, the record by field.
  ffmpeg -i clip.mp4 -pix_fmt yuv420p -f yuv4mpegpipe - | morvale replay --format csv - > clip.csv
  morvale replay --camera back --start 100 --frames 50 --every 2 clip.mp4
  morvale replay --pan portrait.jpg --record pan --report pan_report
      A camera that pans and zooms over a photograph for 120 frames, recorded and shown.
  morvale replay --jobs 4 --report out --format none recordings/*
      Every recording in a process of its own, four at a time; reports in out/NAME/, and out/index.html
      leads to them.
  morvale replay --trace trace.json session-0001
      The stages of each frame, for https://ui.perfetto.dev.

The camera's faces come with a recording; elsewhere a cascade plays the camera's detector (--faces). Ctrl-C ends
after the frame in hand and keeps everything so far.

Exit status: 0 done, 1 a model did not open, a frame failed, a record is not as recorded or a video is damaged, 2 the
command line or a file cannot be used, 130 stopped by Ctrl-C.
)";

/// What the options say, before it is looked at closer.
struct Texts {
  std::optional<std::string> camera, size, crop, picture;
  std::string format = "json";
};

std::vector<Option> selection(ReplayOptions& options) {
  constexpr Range kAny{0, 100000000}, kCount{1, 100000000};
  return {
      {"--start", &options.start, "The first frame, counted from 0 (default: 0)", "N", kAny},
      {"--frames", &options.frames,
       "At most so many frames (default: all); with --pan: the frames of its one round (120)", "N", kCount},
      {"--every", &options.every, "Every Nth frame only (default: 1)", "N", kCount},
      {"--repeat", &options.repeat, "The chosen frames N times in a row (default: 1)", "N",
       Range{1, 100000}}};
}

std::vector<Option> session(ReplayOptions& options, Texts& texts) {
  return {
      {"--camera", &texts.camera, "Whose analysis (default: the recording's, else front)", "front|back"},
      {"--gate", &options.gate, "The gate level of every frame; above 25 a frame is not analysed", "LEVEL"},
      {"--udc", &options.udc, "The front camera sits under the display"},
      {"--debug-level", &options.debug_level, "The library's debug level: drawings in the picture, more log",
       "N", Range{0, 2}},
      {"--engine", &options.engine,
       "What answers for the network (default: auto, a recording where there is one)",
       "auto|recorded|onnx|fixed"},
      {"--model-dir", &options.model_dir,
       "Folder of the network (default: $VEXA_MODEL_DIR, else ~/.cache/morvale/network)", "DIR"},
      {"--faces", &options.faces, "The camera's faces: a JSON file, auto (default: a cascade) or none",
       "FILE|auto|none"},
      {"--cascade", &options.cascade, "The cascade of --faces auto (default: frontalface_alt2)", "FILE"}};
}

std::vector<Option> output(ReplayOptions& options, Texts& texts) {
  return {{"--record", &options.record,
           "Record the session as a bundle in this new folder, or *.morvale file", "DIR"},
          {"--report", &options.report, "Write report.html into this folder", "DIR"},
          {"--picture", &texts.picture, "Write frame N, annotated, into this PNG file", "N=FILE"},
          {"--trace", &options.trace, "Write the stages of each frame for Perfetto", "FILE"},
          {"--format", &texts.format, "JSON lines (default), CSV, bare records or nothing on standard output",
           "json|csv|records|none"},
          {"--times", &options.times, "Add the milliseconds of network, process and analysis to each line"},
          {"--jobs", &options.jobs, "Replay so many inputs at a time, each in a process of its own", "N",
           Range{1, 1024}},
          {"--keep-going", &options.keep_going,
           "Leave out pictures that cannot be read and damaged frames, and tell of them"},
          {"--verbose", &options.verbose, "Show the library's own messages on standard error"}};
}

CommandLine command_line(ReplayOptions& options, Texts& texts) {
  CommandLine line{"morvale replay", kIntroduction, kExamples, {}};
  line.options = {{"INPUT", &options.inputs, "Recordings, videos, folders of pictures, -"},
                  {"--pan", &options.pan, "Pan and zoom over this photograph in place of an INPUT", "PHOTO"},
                  {"--size", &texts.size,
                   "Size of pictures and of panned frames (default: theirs; 640x480 panned)", "WxH"},
                  {"--crop", &texts.crop,
                   "Cut this shape out of every frame: the library takes no other shape whole", "4:3|16:9"}};
  for (const std::vector<Option>& part :
       {selection(options), session(options, texts), output(options, texts)})
    line.options.insert(line.options.end(), part.begin(), part.end());
  return line;
}

void read_picture(const std::string& text, ReplayOptions& options) {
  const char* const end = text.data() + text.size();
  const auto [next, error] = std::from_chars(text.data(), end, options.picture_frame);
  if (error != std::errc() || options.picture_frame < 0 || end - next < 2 || *next != '=')
    throw UsageError("--picture: '" + text + "' names no frame and file; write it as 57=frame.png.");
  options.picture.assign(next + 1, end);
}

/// What cannot be meant together.
void check(const ReplayOptions& options) {
  if (options.inputs.empty() == options.pan.empty())
    throw UsageError(options.pan.empty() ? "an INPUT is missing; see morvale replay --help."
                                         : "--pan is an input of its own; leave the other inputs out.");
  if (options.inputs.size() < 2) return;
  if (!options.trace.empty()) throw UsageError("--trace writes one file; name one input with it.");
  if (!options.picture.empty()) throw UsageError("--picture writes one file; name one input with it.");
  for (const std::string& input : options.inputs)
    if (input == "-")
      throw UsageError("- (standard input) cannot stand beside other inputs; replay it alone.");
}

}  // namespace

std::optional<ReplayOptions> parse_replay_options(int argc, char** argv) {
  ReplayOptions options;
  Texts texts;
  if (!parse_options(command_line(options, texts), argc, argv)) return std::nullopt;
  if (texts.camera) options.camera = *texts.camera == "front" ? Camera::kFront : Camera::kBack;
  if (texts.size) options.shape.size = parse_size(*texts.size);
  if (texts.crop) options.crop = parse_crop(*texts.crop);
  if (texts.picture) read_picture(*texts.picture, options);
  options.format = texts.format == "csv"       ? LineFormat::kCsv
                   : texts.format == "records" ? LineFormat::kRecords
                   : texts.format == "none"    ? LineFormat::kNone
                                               : LineFormat::kJson;
  options.command_line = command_text(argc, argv);
  check(options);
  return options;
}

}  // namespace tool
