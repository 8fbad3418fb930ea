/// `morvale analyze`: photographs and raw frames in, records and annotated pictures out.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>

#include "analyze/analyze_options.h"
#include "common/atomic_file.h"
#include "common/command.h"
#include "common/diverted_output.h"
#include "common/progress.h"
#include "common/words.h"
#include "pictures/opencv_module.h"
#include "report/index_page.h"
#include "service/camera_service.h"
#include "service/faces.h"
#include "service/report_text.h"
#include "service/trace.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

/// NAME_front.png, or NAME_front_03.png when frames are repeated.
fs::path picture_path(const AnalyzeOptions& options, const std::string& path, int frame_index) {
  std::string name = fs::path(path).stem().string() + (options.camera == Camera::kFront ? "_front" : "_back");
  if (options.repeat > 1) {
    char number[16];
    std::snprintf(number, sizeof number, "_%02d", frame_index);
    name += number;
  }
  return fs::path(options.out) / (name + ".png");
}

/// The library's log is silent unless asked for: on a workstation every run of the network is too slow for
/// the device's limit, and it would say so at each frame. MORVALE_LOG, when set, keeps its say.
void choose_log_level(bool verbose) { setenv("MORVALE_LOG", verbose ? "D" : "S", /*overwrite=*/0); }

/// Everything that can be seen before the first frame is, so that a mistake leaves no half of the work
/// behind.
void check(const AnalyzeOptions& options) {
  std::map<fs::path, std::string> pictures;
  for (const std::string& path : options.inputs) {
    if (!options.keep_going) check_input(path, options.shape);
    if (options.out.empty()) continue;
    const auto [other, fresh] = pictures.emplace(picture_path(options, path, 0), path);
    if (!fresh)
      throw UsageError(other->second + " and " + path +
                       " would be drawn into the same picture; analyse them apart.");
  }
}

/// Made only when the first picture is there: a run that ends before leaves no empty folder.
void make_folder(const std::string& folder) {
  std::error_code error;
  fs::create_directories(folder, error);
  if (!fs::is_directory(folder))
    throw UsageError("--out: " + folder + " is not a folder and cannot be made one; name another.");
}

/// One run of the command over all inputs.
class Analysis {
 public:
  explicit Analysis(const AnalyzeOptions& options)
      : options_(options),
        faces_(make_face_source(options.faces, options.cascade, options.inputs)),
        table_(options.inputs),
        data_(STDOUT_FILENO, options.verbose ? STDERR_FILENO : -1),
        progress_(options.inputs.size() * static_cast<size_t>(options.repeat)) {}

  int run() {
    for (const std::string& path : options_.inputs)
      if (const std::optional<Frame> frame = read(path)) analyze(*frame);
    if (!options_.trace.empty()) trace_.write(options_.trace);
    if (options_.inputs.size() > 1 && !drawn_.empty())
      write_index(options_.out, std::to_string(drawn_.size()) + " pictures", drawn_);
    if (unusable_.empty()) return failed_ ? kExitFailed : kExitDone;
    complain(std::to_string(unusable_.size()) + " of " + std::to_string(options_.inputs.size()) +
             " inputs could not be read: " + name_list(unusable_) + ".");
    return kExitUsage;
  }

 private:
  /// Nothing for an input that is left out.
  std::optional<Frame> read(const std::string& path) {
    try {
      check_input(path, options_.shape);
      const Frame frame = read_input(path, options_.shape);
      return options_.crop ? cropped(frame, *options_.crop) : frame;
    } catch (const UsageError& error) {
      if (!options_.keep_going) throw;
      progress_.clear();
      complain(error.what());
      unusable_.push_back(path);
      return std::nullopt;
    }
  }

  void analyze(const Frame& frame) {
    // Only now: what is wrong with the command line or a file is said even where there is no network yet.
    // Another engine than the network brings its own answers and needs no model.
    const char* engine = std::getenv("VEXA_ENGINE");
    if (engine == nullptr || *engine == '\0' || std::string_view(engine) == "onnx")
      choose_model_folder(options_.model_dir);
    CameraService service(options_.camera);
    note_stride(frame);
    const std::vector<FaceRect> faces = faces_->faces(frame);
    for (int index = 0; index < options_.repeat; ++index) {
      progress_.next(frame.input);
      const Trace::Time begin = std::chrono::steady_clock::now();
      const FrameReport report = service.analyze(frame, faces);
      if (!options_.trace.empty()) trace_.add(index, frame.input, begin, report);
      progress_.clear();
      if (report.process != 0) note_failure(frame, index);
      if (!options_.out.empty() && report.process == 0) draw(frame, index, report);
      data_.write_past(options_.table ? table_.lines(frame.input, index, report)
                                      : json_line(frame.input, index, report));
    }
  }

  void draw(const Frame& frame, int index, const FrameReport& report) {
    const std::vector<uint8_t> png = opencv().annotated_png(frame, index, report);
    make_folder(options_.out);
    const fs::path picture = picture_path(options_, frame.input, index);
    write_file(picture, png);
    drawn_.push_back(entry_of(picture.filename().string(), frame, report));
  }

  static IndexEntry entry_of(const std::string& picture, const Frame& frame, const FrameReport& report) {
    IndexEntry entry{fs::path(frame.input).filename().string(), picture, picture, /*good=*/true, {}};
    entry.facts.push_back(counted(report.person_boxes.size(), "person box", "person boxes"));
    entry.facts.push_back("ver " + std::to_string(report.record.ver) + ", " +
                          std::to_string(report.record.humanRatio) + " % " +
                          (report.camera == Camera::kFront ? "person" : "body"));
    entry.facts.push_back(std::to_string(frame.width) + " × " + std::to_string(frame.height));
    return entry;
  }

  void note_failure(const Frame& frame, int index) {
    failed_ = true;
    complain(frame.input + ": frame " + std::to_string(index) +
             " failed; --verbose shows what the library says.");
  }

  void note_stride(const Frame& frame) const {
    if (frame.stride == frame.width) return;
    progress_.clear();
    complain(frame.input + ": the library reads rows of " + std::to_string(frame.width) +
             " bytes whatever the stride, so it sees a sheared picture.");
  }

  const AnalyzeOptions& options_;
  std::unique_ptr<FaceSource> faces_;
  Table table_;
  /// The library prints a few lines on standard output by contract. They must not end up among our data: the
  /// descriptor is diverted before the first call into the library, and only write_past reaches its old end.
  DivertedOutput data_;
  Progress progress_;
  Trace trace_;
  std::vector<IndexEntry> drawn_;  ///< for the index of many photographs
  bool failed_ = false;
  std::vector<std::string> unusable_;
};

}  // namespace

int analyze_main(int argc, char** argv) {
  const std::optional<AnalyzeOptions> options = parse_analyze_options(argc, argv);
  if (!options) return kExitDone;
  check(*options);
  choose_log_level(options->verbose);
  return Analysis(*options).run();
}

}  // namespace tool
