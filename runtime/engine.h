/// What answers a session's runs: a network today; anything that gives scores for a picture may stand here.
#pragma once

#include <filesystem>
#include <memory>
#include <string>

#include "core/vexa_runtime.h"

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

/// Runs ONNX files with OpenCV's dnn module.
std::unique_ptr<Engine> make_onnx_engine();

}  // namespace morvale::runtime
