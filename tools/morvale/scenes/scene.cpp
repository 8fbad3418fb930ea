/// `morvale scene`: a made-up scene as a session bundle, with the truth beside it.
#include "scene/scene.h"

#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>

#include "common/atomic_file.h"
#include "common/command.h"
#include "common/diverted_output.h"
#include "common/interrupt.h"
#include "common/progress.h"
#include "scenes/scene_options.h"
#include "scenes/truth_file.h"
#include "service/camera_service.h"
#include "service/session_stub.h"
#include "session/build_note.h"
#include "session/bundle.h"
#include "session/printable.h"

namespace tool {
namespace {

using morvale::scene::NetworkShape;
using morvale::scene::Scene;
using morvale::scene::SceneFrame;
using morvale::session::BundleWriter;

/// Stands in for the runtime's session while it lives and hands out the scores that it was given. The library
/// calls whatever session_ points at; its own session is put back before the core closes it.
class ScriptedSession final : public SessionStub {
 public:
  ScriptedSession() : replaced_(session_) { session_ = this; }
  ~ScriptedSession() { session_ = replaced_; }
  ScriptedSession(const ScriptedSession&) = delete;
  ScriptedSession& operator=(const ScriptedSession&) = delete;

  void answer(std::vector<float> scores) { scores_ = std::move(scores); }

  int32_t execute(std::vector<vexa::DataBuffer>&, std::vector<vexa::DataBuffer>& out) override {
    out.push_back({scores_.data(), {1, NETSIZE, NETSIZE, morvale::kLabels}});
    return 0;
  }

 private:
  vexa::VexaSession* replaced_;
  std::vector<float> scores_;
};

std::vector<FaceRect> visible_faces(const SceneFrame& frame) {
  std::vector<FaceRect> faces;
  for (const morvale::scene::PersonTruth& person : frame.truth.people)
    if (person.face.w > 0) faces.push_back(person.face);
  return faces;
}

/// The caller's record as CameraService delivers it, for the bundle.
MorvaleData_t record_of(const SceneCommand& command, const std::vector<FaceRect>& faces) {
  MorvaleData_t record{};
  record.cameraType = command.camera == Camera::kFront ? morvale::kFrontCamera : 0;
  record.width = record.stride = command.scene.width;
  record.height = command.scene.height;
  record.faceCount = static_cast<int32_t>(faces.size());
  std::copy(faces.begin(), faces.end(), record.faces);
  return record;
}

/// The library needs a model to open before it can be given scores; this one needs no file.
void choose_modelless_runtime() {
  setenv("VEXA_ENGINE", "fixed", 1);
  setenv("MORVALE_LOG", "S", 0);
}

/// The folder of a recording that is being made. One that does not get whole leaves nothing, so that the next
/// try finds the place free: the same command makes the same bytes again.
class Unfinished {
 public:
  explicit Unfinished(const std::string& folder) : folder_(folder) {}
  ~Unfinished() {
    std::error_code ignored;
    if (!whole_) std::filesystem::remove_all(folder_, ignored);
  }
  Unfinished(const Unfinished&) = delete;
  Unfinished& operator=(const Unfinished&) = delete;

  void is_whole() { whole_ = true; }

 private:
  const std::string& folder_;
  bool whole_ = false;
};

/// One run of the command.
class SceneMaker {
 public:
  explicit SceneMaker(const SceneCommand& command)
      : command_(command),
        scene_(command.scene),
        service_(command.camera),
        writer_(make_writer()),
        folder_(command.out) {}

  /// False when it was asked to stop.
  bool run() {
    Progress progress(static_cast<size_t>(command_.frames));
    for (int index = 0; index < command_.frames; ++index) {
      if (Interrupt::asked() != 0) return false;
      progress.next(command_.out);
      add(index);
    }
    // Last: a bundle with a truth is a whole one.
    write_file(truth_path(command_.out), {truth_.begin(), truth_.end()});
    folder_.is_whole();
    return true;
  }

 private:
  BundleWriter make_writer() const {
    morvale::session::SessionInfo info;
    info.camera_type = record_of(command_, {}).cameraType;
    info.pad_size = PADSIZE;
    info.net_size = NETSIZE;
    info.made_by = command_.made_by;
    info.library = morvale::session::library_identity();
    try {
      return BundleWriter(command_.out, info);
    } catch (const morvale::session::BundleError& error) {
      throw UsageError("--out: " + std::string(error.what()) + ".");
    }
  }

  void add(int index) {
    SceneFrame made = scene_.frame(index);
    const std::vector<FaceRect> faces = visible_faces(made);
    morvale::session::FrameOutput output;
    output.execute_result = 0;
    output.logits = scene_.scores(made, index, NetworkShape{PADSIZE, NETSIZE});
    runtime_.answer(output.logits);
    const Frame frame{command_.out, command_.scene.width, command_.scene.height, command_.scene.width,
                      made.nv21};
    FrameReport report = service_.analyze(frame, faces);
    if (report.process != 0) throw RunError("frame " + std::to_string(index) + " failed in the library.");
    output.result = report.record;
    output.labels = std::move(report.label_map);
    morvale::session::FrameInput input;
    input.record = record_of(command_, faces);
    input.nv21 = std::move(made.nv21);
    writer_.add(input, output);
    truth_ += truth_line(index, made.truth);
  }

  const SceneCommand& command_;
  Scene scene_;
  CameraService service_;
  ScriptedSession runtime_;  ///< behind the service, so that it goes first
  BundleWriter writer_;
  Unfinished folder_;  ///< only once the writer has found the folder free
  std::string truth_;
};

}  // namespace

int scene_main(int argc, char** argv) {
  const std::optional<SceneCommand> command = parse_scene_options(argc, argv);
  if (!command) return kExitDone;
  choose_modelless_runtime();
  DivertedOutput data(STDOUT_FILENO);
  const Interrupt leave_nothing_half_made;
  if (!SceneMaker(*command).run()) {
    complain(command->out + ": stopped; nothing of it is left.");
    return kExitInterrupted;
  }
  data.write_past(morvale::session::printable(command->out) + ": " + std::to_string(command->frames) +
                  " frames, " + std::to_string(command->scene.width) + "x" +
                  std::to_string(command->scene.height) + "\n");
  return kExitDone;
}

}  // namespace tool
