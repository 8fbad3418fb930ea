#include "replay/replay_run.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>

#include "common/command.h"
#include "common/diverted_output.h"
#include "common/interrupt.h"
#include "common/progress.h"
#include "common/words.h"
#include "pictures/opencv_module.h"
#include "replay/replay_outputs.h"
#include "service/faces.h"
#include "session/build_note.h"
#include "sources/frame_selection.h"

namespace tool {
namespace {

namespace fs = std::filesystem;
using morvale::session::BundleReader;
using morvale::session::SessionInfo;

constexpr FrameSize kPannedSize{640, 480};
constexpr int kPannedFrames = 120;

/// The input with everything that is settled before its first frame.
struct Plan {
  std::string input;
  SourceKind kind = SourceKind::kBundle;
  SessionInfo session;  ///< a recording's own, with --camera applied
  std::string made_by;  ///< a recording's own
  std::string engine;   ///< "recorded", "onnx", "fixed"
  bool pixels_kept = true;
  bool as_recorded = false;  ///< nothing is asked for that could change a record
};

SourceKind kind_of(const ReplayOptions& options) {
  return options.pan.empty() ? kind_of_input(options.inputs.front()) : SourceKind::kPan;
}

std::unique_ptr<FrameSource> open_source(const ReplayOptions& options, const Plan& plan) {
  switch (plan.kind) {
    case SourceKind::kBundle:
      return make_bundle_source(plan.input, options.keep_going);
    case SourceKind::kVideo:
      return open_video(plan.input);
    case SourceKind::kY4m:
      return make_y4m_source(plan.input);
    case SourceKind::kPictures:
      return make_picture_source(plan.input, options.shape, options.keep_going);
    case SourceKind::kPan:
      break;
  }
  return opencv().make_pan_source(plan.input, options.shape.size.value_or(kPannedSize),
                                  options.frames.value_or(kPannedFrames));
}

/// "auto": a recording answers for the network, unless it is of the other camera's model.
std::string engine_of(const ReplayOptions& options, const Plan& plan, bool other_camera) {
  const bool recording = plan.kind == SourceKind::kBundle;
  if (options.engine == "recorded" && (!recording || other_camera))
    throw UsageError(recording
                         ? "--engine recorded: the recording answers for its own camera's model only; "
                           "leave --camera out or take --engine onnx."
                         : "--engine recorded: " + plan.input + " is no recording; leave the flag out.");
  if (options.engine != "auto") return options.engine;
  return recording && !other_camera ? "recorded" : "onnx";
}

void plan_bundle(const ReplayOptions& options, Plan& plan, bool& other_camera) {
  using morvale::session::Damage;
  const BundleReader bundle(plan.input, options.keep_going ? Damage::kTell : Damage::kRefuse);
  if (!bundle.warning().empty()) complain(bundle.warning() + ".");
  plan.session = bundle.info();
  plan.made_by = bundle.info().made_by;
  other_camera = options.camera && *options.camera != camera_of(plan.session.camera_type);
  for (int frame = 0; frame < bundle.frame_count(); ++frame) {
    if (other_camera && bundle.is_thin(frame))
      throw UsageError("--camera: " + plan.input +
                       " holds of its frames what its own camera's model reads; replay the whole recording.");
    plan.pixels_kept &= bundle.has_pixels(frame) || bundle.execute_result(frame) == std::nullopt;
  }
}

Plan plan_of(const ReplayOptions& options) {
  Plan plan;
  plan.input = options.pan.empty() ? options.inputs.front() : options.pan;
  plan.kind = kind_of(options);
  const bool sized = plan.kind == SourceKind::kPictures || plan.kind == SourceKind::kPan;
  if (options.shape.size && !sized)
    throw UsageError("--size: the frames of " + plan.input +
                     " have a size of their own; leave the flag out.");
  if (options.crop && plan.kind == SourceKind::kBundle)
    throw UsageError("--crop: " + plan.input + " is a recording, whose frames are delivered as they were.");
  bool other_camera = false;
  plan.session.camera_type = camera_type_of(options.camera.value_or(Camera::kFront));
  if (plan.kind == SourceKind::kBundle) plan_bundle(options, plan, other_camera);
  if (other_camera) {
    plan.session.camera_type = camera_type_of(*options.camera);
    plan.session.open_result = 0;
    plan.session.pad_size = *options.camera == Camera::kFront ? 256 : 128;
    plan.session.net_size = plan.session.pad_size / 4;
  }
  plan.engine = engine_of(options, plan, other_camera);
  plan.as_recorded = plan.engine == "recorded" && !options.gate && !options.udc &&
                     options.debug_level.value_or(0) == 0 && plan.pixels_kept;
  return plan;
}

void set_environment(const ReplayOptions& options, const Plan& plan) {
  setenv("MORVALE_LOG", options.verbose ? "D" : "S", /*overwrite=*/0);
  setenv("VEXA_ENGINE", plan.engine.c_str(), 1);
  if (options.debug_level)
    setenv("PERSIST_MORVALE_CAPTURE_DEBUG", std::to_string(*options.debug_level).c_str(), 1);
  if (plan.engine == "recorded") setenv("VEXA_BUNDLE", plan.input.c_str(), 1);
  if (plan.engine == "onnx") choose_model_folder(options.model_dir);
}

/// One input's way through the library.
class Replay {
 public:
  Replay(const ReplayOptions& options, const Plan& plan)
      : options_(options),
        plan_(plan),
        frames_([&options, &plan] { return open_source(options, plan); }, options.start, options.every,
                options.pan.empty() ? options.frames : std::nullopt, options.repeat),
        data_(STDOUT_FILENO, options.verbose ? STDERR_FILENO : -1) {
    if (plan.kind != SourceKind::kBundle) {
      std::vector<std::string> names = frames_.files();  // a face list goes by the name that a frame has
      if (names.empty()) names.push_back(plan.input);
      faces_ = make_face_source(options.faces, options.cascade, names);
    }
    set_environment(options, plan);
    if (plan.kind == SourceKind::kBundle)
      service_.emplace(plan.session);
    else
      service_.emplace(camera_of(plan.session.camera_type));
    // The same frames through the same model: whatever else was asked for, the records can be held together.
    if (plan.kind == SourceKind::kBundle && frames_.is_plain() && plan.pixels_kept) comparison_.emplace();
    open_outputs();
    const std::vector<std::string> others = frames_.passed_over();
    if (!others.empty())
      complain(plan.input + ": passed over what is no picture: " + name_list(others) + ".");
  }

  int run() {
    Progress progress(frames_.count());
    int done = 0;
    for (; Interrupt::asked() == 0; ++done) {
      const Trace::Time read_begin = std::chrono::steady_clock::now();
      std::optional<SourceFrame> frame = next_frame();
      if (!frame) break;
      progress.next(plan_.input);
      if (frame->damage.empty()) {
        process(*frame, read_begin);
      } else {
        progress.clear();
        leave_out(*frame);
      }
    }
    progress.clear();
    if (done == 0) give_up_without_frames();
    for (const auto& output : outputs_) output->finish(left_out_ == 0 ? comparison_ : std::nullopt);
    const int status = sum_up(done);
    if (!options_.report.empty())
      complain("the report is " + (fs::path(options_.report) / "report.html").string() + ".");
    // Ctrl-C ends the program before us in a pipe too: a stream that then breaks off is no error.
    if (unreadable_ && Interrupt::asked() == 0) std::rethrow_exception(unreadable_);
    return status;
  }

 private:
  /// A frame that cannot be read ends the replay as the last one does: what is done is kept.
  std::optional<SourceFrame> next_frame() {
    try {
      return frames_.next();
    } catch (...) {
      unreadable_ = std::current_exception();
      return std::nullopt;
    }
  }

  void give_up_without_frames() const {
    if (unreadable_) std::rethrow_exception(unreadable_);
    if (Interrupt::asked() == 0)
      throw UsageError(plan_.input + ": there is no frame to replay; check --start and the input.");
  }

  void open_outputs() {
    const ReplayOptions& o = options_;
    if (!o.record.empty()) outputs_.push_back(make_record_output(o.record, recorded_info()));
    if (!o.report.empty()) outputs_.push_back(make_report_output(o.report, report_head()));
    if (!o.picture.empty()) outputs_.push_back(make_picture_output(o.picture_frame, o.picture, plan_.input));
    if (!o.trace.empty()) outputs_.push_back(make_trace_output(o.trace, plan_.input));
    if (o.format != LineFormat::kNone)
      outputs_.push_back(make_line_output(o.format, o.heading, o.times, plan_.input, data_));
  }

  SessionInfo recorded_info() const {
    SessionInfo info = plan_.session;
    info.open_result = service_->open_result();
    info.made_by = "morvale " MORVALE_VERSION ": " + options_.command_line;
    info.library = morvale::session::library_identity();
    if (PADSIZE > 0) info.pad_size = PADSIZE;
    if (NETSIZE > 0) info.net_size = NETSIZE;
    return info;
  }

  ReportHead report_head() const {
    ReportHead head;
    const fs::path path(plan_.input);
    head.title = plan_.input == "-" ? "standard input"
                                    : (path.has_filename() ? path : path.parent_path()).filename().string();
    head.command = options_.command_line;
    head.source_kind = name_of(plan_.kind);
    head.source_name = plan_.input;
    head.made_by = plan_.made_by;
    head.camera = camera_of(plan_.session.camera_type);
    head.engine = plan_.engine;
    head.expected_frames = frames_.count();
    return head;
  }

  void process(SourceFrame& frame, Trace::Time read_begin) {
    apply_flags(frame);
    if (plan_.engine == "recorded") setenv("VEXA_BUNDLE_FRAME", std::to_string(frame.number).c_str(), 1);
    const FrameReport report = service_->replay(frame.input);
    const StageTimes times = plan_.engine == "recorded" ? replayed_times(report, frame.recorded->network_ms)
                                                        : measured_times(report);
    if (comparison_ && left_out_ == 0) comparison_->add(frame.number, *frame.recorded, report);
    const bool failed_then = frame.recorded && frame.recorded->process_result != 0;
    if (report.process != 0 && !failed_then) {
      if (failed_ == 0) first_failed_ = frame.number;
      ++failed_;
    }
    for (const auto& output : outputs_) output->add({frame, report, service_->planes(), read_begin, times});
  }

  /// Records lean on the frames before theirs: behind a frame that is left out none is compared.
  void leave_out(const SourceFrame& frame) {
    if (left_out_++ == 0) first_left_out_ = frame.number;
    complain(frame.damage + "; it is left out.");
  }

  void apply_flags(SourceFrame& frame) {
    if (options_.crop) crop(frame);
    MorvaleData_t& record = frame.input.record;
    if (faces_) {
      const Frame seen{frame.name.empty() ? plan_.input : frame.name, record.width, record.height,
                       record.stride, frame.input.nv21};
      const std::vector<FaceRect> faces = faces_->faces(seen);
      record.faceCount = static_cast<int32_t>(faces.size());
      std::copy(faces.begin(), faces.end(), record.faces);
    }
    if (faces_ || options_.camera) record.cameraType = plan_.session.camera_type;
    if (options_.camera) frame.input.later.reset();
    if (options_.gate) record.gateLevel = *options_.gate;
    if (options_.udc) record.isUDC = 1;
  }

  void crop(SourceFrame& frame) const {
    const MorvaleData_t& record = frame.input.record;
    const std::string& name = frame.name.empty() ? plan_.input : frame.name;
    frame.input = input_of(cropped(
        {name, record.width, record.height, record.stride, std::move(frame.input.nv21)}, *options_.crop));
  }

  /// The closing words on standard error, and the exit status.
  int sum_up(int frames) const {
    const std::string count = counted(static_cast<size_t>(frames), "frame");
    std::string text = plan_.input + ": " + count;
    int status = kExitDone;
    if (comparison_ && comparison_->first()) {
      text += "; " + std::to_string(comparison_->differing()) +
              " not as recorded, the first: " + comparison_->first()->text();
      if (plan_.as_recorded) status = kExitFailed;
    } else if (comparison_) {
      text += ", all records as recorded";
    } else if (plan_.kind == SourceKind::kBundle) {
      text += plan_.pixels_kept ? "; not compared with the recorded ones, which are not these frames in a row"
                                : "; not compared: the recording holds no pixels";
    }
    if (failed_ > 0 && status == kExitDone) {
      text += "; " + std::to_string(failed_) + " failed, the first: frame " + std::to_string(first_failed_) +
              " (--verbose shows what the library says)";
      status = kExitFailed;
    }
    if (left_out_ > 0) {
      text += "; " + std::to_string(left_out_) + " damaged and left out, the first: frame " +
              std::to_string(first_left_out_) + ", behind which no record is compared";
      status = kExitFailed;
    }
    if (frames_.damaged_frames() > 0) {
      text += "; the video is damaged: " + std::to_string(frames_.damaged_frames()) +
              " of the frames read so far";
      status = kExitFailed;
    }
    if (!frames_.unusable().empty()) {
      text += "; left out what could not be read: " + name_list(frames_.unusable());
      status = kExitUsage;
    }
    if (Interrupt::asked() != 0) {
      text += "; stopped there";
      status = kExitInterrupted;
    }
    complain(text + ".");
    return status;
  }

  const ReplayOptions& options_;
  const Plan& plan_;
  FrameSelection frames_;
  std::unique_ptr<FaceSource> faces_;  ///< null for recordings, which bring theirs
  /// As in analyze: what the library prints on standard output must not end up among our data.
  DivertedOutput data_;
  std::optional<CameraService> service_;
  std::vector<std::unique_ptr<ReplayOutput>> outputs_;
  std::optional<RecordComparison> comparison_;
  int left_out_ = 0, first_left_out_ = 0;  ///< damaged frames
  int failed_ = 0, first_failed_ = 0;      ///< frames that fail here and did not when they were recorded
  std::exception_ptr unreadable_;          ///< why the frames ended early
};

}  // namespace

int replay_one(const ReplayOptions& options) {
  try {
    const Interrupt keep_what_is_done;
    const Plan plan = plan_of(options);
    if (options.repeat > 1 && plan.input == "-")
      throw UsageError("--repeat: standard input passes by once only; replay a file.");
    return Replay(options, plan).run();
  } catch (const morvale::session::BundleError& error) {
    throw UsageError(std::string(error.what()) + ".");
  }
}

}  // namespace tool
