/// What answers a session's runs: a network today; anything that gives scores for a picture may stand here.
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <string>

#include <morvale/core/vexa_runtime.h>

namespace morvale::runtime {

/// Failures are thrown as std::exception with one sentence; the session turns them into return values.
class Engine {
 public:
  virtual ~Engine() = default;

  /// Loads the model; throws when it cannot be read or does not map 1 x P x P x 3 to 1 x P/4 x P/4 x 5.
  virtual void open(const std::filesystem::path& model, const std::string& input_name,
                    const std::string& output_name) = 0;

  /// Runs on one input. The result's elements are the engine's and stay valid until the next run.
  virtual vexa::DataBuffer run(const vexa::DataBuffer& input) = 0;
};

/// Runs ONNX files with OpenCV's dnn module, out of libvexa_onnx.so, which the first call loads. Throws where
/// that is not there.
std::unique_ptr<Engine> make_onnx_engine();

/// Gives the scores of one made-up portrait at once, whatever the picture: for timing everything but the
/// network.
std::unique_ptr<Engine> make_fixed_engine();

/// A session bundle in the model's place.
struct RecordedSession {
  std::unique_ptr<Engine> engine;
  int32_t open_result;  ///< what open returned when the session was recorded
};

/// Answers each run with the scores of the bundle's next frame that the network ran on. VEXA_BUNDLE_FRAME,
/// read before every run, names another frame to go on from. A frame whose run failed fails again; so does a
/// run behind the last frame, and one with an input that is not the recorded model's. Throws when the bundle
/// cannot be read.
RecordedSession open_recorded_session(const std::filesystem::path& bundle);

}  // namespace morvale::runtime
