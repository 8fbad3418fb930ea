#include "replay/replay_options.h"

#include <set>

#include "common/command.h"
#include "common/command_line.h"

namespace tool {
namespace {

constexpr const char* kIntroduction =
    "Sends recordings, videos or folders of pictures through one session of the library, frame by frame, as "
    "a\n"
    "camera does, and prints one result record a frame. A recording answers for the network itself: it "
    "needs\n"
    "neither network nor phone, and its records must come out as they were recorded.\n";

constexpr const char* kExamples =
    R"(An INPUT is a recording (a folder with session.json), a folder of pictures (in the order of their names), a video,
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
      Every recording in a process of its own, four at a time; reports in out/NAME/.
  morvale replay --trace trace.json session-0001
      The stages of each frame, for https://ui.perfetto.dev.

The camera's faces come with a recording; elsewhere a cascade plays the camera's detector (--faces). Ctrl-C ends
after the frame in hand and keeps everything so far.

Exit status: 0 done, 1 a model did not open, a frame failed or a record is not as recorded, 2 the command line or
a file cannot be used, 130 stopped by Ctrl-C.
)";

/// The raw text of options that need more than CLI11's own conversion.
struct Texts {
  std::string camera, size, format = "json", model_dir;
  int frames = 0, debug_level = 0;
  float gate = 0;
};

void declare_selection(CLI::App& app, ReplayOptions& options, Texts& texts) {
  constexpr int kMost = 100000000;
  app.add_option("--start", options.start, "The first frame, counted from 0 (default: 0)")
      ->type_name("N")
      ->check(within(0, kMost));
  app.add_option("--frames", texts.frames,
                 "At most so many frames (default: all); with --pan: the frames of its one round (120)")
      ->type_name("N")
      ->check(within(1, kMost));
  app.add_option("--every", options.every, "Every Nth frame only (default: 1)")
      ->type_name("N")
      ->check(within(1, kMost));
  app.add_option("--repeat", options.repeat, "The chosen frames N times in a row (default: 1)")
      ->type_name("N")
      ->check(within(1, 100000));
}

void declare_session(CLI::App& app, ReplayOptions& options, Texts& texts) {
  app.add_option("--camera", texts.camera, "Whose analysis (default: the recording's, else front)")
      ->type_name("front|back")
      ->check(one_of({"front", "back"}));
  app.add_option("--gate", texts.gate, "The gate level of every frame; above 25 a frame is not analysed")
      ->type_name("LEVEL");
  app.add_flag("--udc", options.udc, "The front camera sits under the display");
  app.add_option("--debug-level", texts.debug_level,
                 "The library's debug level: drawings in the picture, more log")
      ->type_name("N")
      ->check(within(0, 2));
  app.add_option("--engine", options.engine,
                 "What answers for the network (default: auto, a recording where there is one)")
      ->type_name("auto|recorded|onnx|fixed")
      ->check(one_of({"auto", "recorded", "onnx", "fixed"}));
  app.add_option("--model-dir", texts.model_dir,
                 "Folder of the network (default: $VEXA_MODEL_DIR, else ~/.cache/morvale/network)")
      ->type_name("DIR");
  app.add_option("--faces", options.faces,
                 "The camera's faces: a JSON file, auto (default: a cascade) or none")
      ->type_name("FILE|auto|none");
  app.add_option("--cascade", options.cascade, "The cascade of --faces auto (default: frontalface_alt2)")
      ->type_name("FILE");
}

void declare_output(CLI::App& app, ReplayOptions& options, Texts& texts) {
  app.add_option("--record", options.record, "Record the session as a bundle in this new folder")
      ->type_name("DIR");
  app.add_option("--report", options.report, "Write report.html into this folder")->type_name("DIR");
  app.add_option("--trace", options.trace, "Write the stages of each frame for Perfetto")->type_name("FILE");
  app.add_option("--format", texts.format, "JSON lines (default), CSV or nothing on standard output")
      ->type_name("json|csv|none")
      ->check(one_of({"json", "csv", "none"}));
  app.add_flag("--times", options.times,
               "Add the milliseconds of network, process and analysis to each line");
  app.add_option("--jobs", options.jobs, "Replay so many inputs at a time, each in a process of its own")
      ->type_name("N")
      ->check(within(1, 1024));
  app.add_flag("--verbose", options.verbose, "Show the library's own messages on standard error");
}

/// What cannot be meant together.
void check(const ReplayOptions& options) {
  if (options.inputs.empty() == options.pan.empty())
    throw UsageError(options.pan.empty() ? "an INPUT is missing; see morvale replay --help."
                                         : "--pan is an input of its own; leave the other inputs out.");
  if (options.inputs.size() < 2) return;
  if (!options.trace.empty()) throw UsageError("--trace writes one file; name one input with it.");
  for (const std::string& input : options.inputs)
    if (input == "-")
      throw UsageError("- (standard input) cannot stand beside other inputs; replay it alone.");
}

}  // namespace

std::optional<ReplayOptions> parse_replay_options(int argc, char** argv) {
  ReplayOptions options;
  Texts texts;
  CLI::App app(kIntroduction, "morvale replay");
  app.add_option("INPUT", options.inputs, "Recordings, videos, folders of pictures, -")->type_name("");
  app.add_option("--pan", options.pan, "Pan and zoom over this photograph in place of an INPUT")
      ->type_name("PHOTO");
  app.add_option("--size", texts.size,
                 "Size of pictures and of panned frames (default: theirs; 640x480 panned)")
      ->type_name("WxH");
  declare_selection(app, options, texts);
  declare_session(app, options, texts);
  declare_output(app, options, texts);
  app.footer(kExamples);
  if (!parse_command_line(app, argc, argv)) return std::nullopt;
  if (app.count("--camera") > 0) options.camera = texts.camera == "front" ? Camera::kFront : Camera::kBack;
  if (app.count("--gate") > 0) options.gate = texts.gate;
  if (app.count("--debug-level") > 0) options.debug_level = texts.debug_level;
  if (app.count("--model-dir") > 0) options.model_dir = texts.model_dir;
  if (app.count("--size") > 0) options.shape.size = parse_size(texts.size);
  if (app.count("--frames") > 0) options.frames = texts.frames;
  options.format = texts.format == "csv"    ? LineFormat::kCsv
                   : texts.format == "none" ? LineFormat::kNone
                                            : LineFormat::kJson;
  options.command_line = command_text(argc, argv);
  check(options);
  return options;
}

}  // namespace tool
