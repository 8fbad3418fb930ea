/// `morvale bench`: how long the library takes for a frame, stage by stage, without the network.
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include <morvale/morvale.h>
#include "common/command.h"
#include "common/diverted_output.h"
#include "common/options.h"
#include "common/progress.h"
#include "service/camera_service.h"

namespace tool {
namespace {

constexpr const char* kIntroduction =
    "Drives frames through the library with a network that answers at once, and prints how long the stages "
    "take.\n";

constexpr const char* kExamples = R"(Examples:
  morvale bench
      3000 frames of 4000x3000 on the front camera.
  morvale bench --camera back --size 1920x1080 --frames 10000 --json
  MORVALE_KERNELS=portable morvale bench
      The same with the portable kernels.

Each frame is another one of many, so that it comes from memory as a camera's does, not from the cache. The
first frame is told apart; the other figures are taken over the frames behind it.
)";

struct BenchOptions {
  std::string camera = "front", size;
  int frames = 3000;
  bool json = false;
};

/// Microseconds of every frame in one stage.
struct Stage {
  const char* name;
  std::vector<double> us = {};

  double first() const { return us.front(); }
  /// The figures below are of the frames behind the first one.
  double at(double share) const {
    std::vector<double> sorted(us.begin() + 1, us.end());
    std::sort(sorted.begin(), sorted.end());
    return sorted[std::min(sorted.size() - 1,
                           static_cast<size_t>(share * static_cast<double>(sorted.size())))];
  }
};

struct Figure {
  const char* name;
  double share;
};
constexpr Figure kFigures[] = {{"p50", 0.5}, {"p90", 0.9}, {"p99", 0.99}, {"p99.9", 0.999}, {"max", 1.0}};

void fill_with_noise(std::vector<uint8_t>& bytes, std::mt19937& random) {
  for (size_t i = 0; i < bytes.size(); i += 4) {
    const auto four = static_cast<uint32_t>(random());
    std::memcpy(bytes.data() + i, &four, std::min<size_t>(4, bytes.size() - i));
  }
}

/// Frames that together are far larger than a processor's caches: none comes from there when its turn comes.
std::vector<Frame> frames_of(FrameSize size) {
  constexpr int64_t kAllBytes = 384'000'000;
  const int64_t bytes = size.pixels() * 3 / 2;
  std::mt19937 random(1);
  std::vector<Frame> frames(static_cast<size_t>(std::max<int64_t>(kAllBytes / bytes, 8)));
  for (Frame& frame : frames) {
    frame.width = frame.stride = size.width;
    frame.height = size.height;
    frame.nv21.resize(static_cast<size_t>(size.width) * static_cast<size_t>(size.height) * 3 / 2);
    fill_with_noise(frame.nv21, random);
  }
  return frames;
}

/// One session, timed from outside as its caller feels it.
class TimedSession {
 public:
  explicit TimedSession(int32_t camera_type) {
    record_.cameraType = camera_type;
    core_.Morvale_core_init(&record_);
    core_.Morvale_core_setModel(camera_type);
  }
  ~TimedSession() { core_.Morvale_core_deinit(); }
  TimedSession(const TimedSession&) = delete;
  TimedSession& operator=(const TimedSession&) = delete;

  void run(const Frame& frame) {
    record_.width = frame.width;
    record_.height = frame.height;
    // At debug level 0 the library only reads the planes.
    record_.yPlane = record_.uvPlane = const_cast<uint8_t*>(frame.luma());
    record_.faceCount = 1;
    record_.faces[0] = {frame.width * 2 / 5, frame.height / 4, frame.width / 5, frame.height / 4};
    PersonWholeMeta result;
    const auto start = now();
    if (core_.Morvale_process() != 0) throw RunError("a frame failed; set MORVALE_LOG=E to see why.");
    const auto processed = now();
    core_.Morvale_core_afterProcss();
    const auto analysed = now();
    core_.Morvale_core_getresult(&result);
    const auto done = now();
    add(0, start, processed);
    add(1, processed, analysed);
    add(2, analysed, done);
    add(3, start, done);
  }
  const std::vector<Stage>& stages() const { return stages_; }

 private:
  using Clock = std::chrono::steady_clock;
  static Clock::time_point now() { return Clock::now(); }
  void add(size_t stage, Clock::time_point from, Clock::time_point to) {
    stages_[stage].us.push_back(std::chrono::duration<double, std::micro>(to - from).count());
  }

  MorvaleData_t record_{};
  MorvaleCore core_;
  std::vector<Stage> stages_ = {{"process"}, {"after-process"}, {"get-result"}, {"whole frame"}};
};

std::string table(const std::vector<Stage>& stages) {
  std::string text = "microseconds      first";
  char cell[64];
  for (const Figure& figure : kFigures) std::snprintf(cell, sizeof cell, "%10s", figure.name), text += cell;
  text += '\n';
  for (const Stage& stage : stages) {
    std::snprintf(cell, sizeof cell, "%-14s %8.1f", stage.name, stage.first());
    text += cell;
    for (const Figure& figure : kFigures) {
      std::snprintf(cell, sizeof cell, "%10.1f", stage.at(figure.share));
      text += cell;
    }
    text += '\n';
  }
  return text;
}

std::string json(const std::vector<Stage>& stages) {
  std::string text = "{\"unit\":\"us\"";
  char cell[64];
  for (const Stage& stage : stages) {
    std::snprintf(cell, sizeof cell, ",\"%s\":{\"first\":%.3f", stage.name, stage.first());
    text += cell;
    for (const Figure& figure : kFigures) {
      std::snprintf(cell, sizeof cell, ",\"%s\":%.3f", figure.name, stage.at(figure.share));
      text += cell;
    }
    text += '}';
  }
  return text + "}\n";
}

}  // namespace

int bench_main(int argc, char** argv) {
  BenchOptions options;
  const CommandLine line{
      "morvale bench",
      kIntroduction,
      kExamples,
      {{"--camera", &options.camera, "front or back (default: front)", "front|back"},
       {"--size", &options.size, "Frame size (default: 4000x3000 front, 1920x1080 back)", "WxH"},
       {"--frames", &options.frames, "How many frames (default: 3000)", "N", Range{2, 1000000}},
       {"--json", &options.json, "One JSON object in place of the table"}}};
  if (!parse_options(line, argc, argv)) return kExitDone;

  const bool front = options.camera == "front";
  if (options.size.empty()) options.size = front ? "4000x3000" : "1920x1080";
  setenv("VEXA_ENGINE", "fixed", 1);
  setenv("MORVALE_LOG", "S", 0);
  const std::vector<Frame> frames = frames_of(parse_size(options.size));

  DivertedOutput library_output(1);
  TimedSession session(front ? morvale::kFrontCamera : 0);
  Progress progress(static_cast<size_t>(options.frames));
  for (int i = 0; i < options.frames; ++i) {
    progress.next(options.size);
    session.run(frames[static_cast<size_t>(i) % frames.size()]);
  }
  progress.clear();
  library_output.write_past(options.json ? json(session.stages()) : table(session.stages()));
  return kExitDone;
}

}  // namespace tool
