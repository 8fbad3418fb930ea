/// The workstation's libvexa_vndk: sessions with the device runtime's binary interface.
#include <algorithm>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <iostream>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <morvale/core/export.h>
#include <morvale/core/vexa_runtime.h>
#include "runtime/engine.h"
#include "session/printable.h"

namespace morvale::runtime {
namespace {

constexpr int32_t kSuccess = 0;
constexpr int32_t kFailure = 1;

/// One line, whatever the text holds; written at once so that lines do not mix.
void report(std::string text) {
  std::replace(text.begin(), text.end(), '\n', ' ');
  std::cerr << "vexa_vndk: " + session::printable(text) + "\n" << std::flush;
}

/// The core asks for a file of the device ("/vendor/.../name.dlc"); its counterpart here is name.onnx in the
/// folder that VEXA_MODEL_DIR names.
std::filesystem::path model_file(const std::string& device_path) {
  const std::filesystem::path name = std::filesystem::path(device_path).filename().replace_extension(".onnx");
  const char* folder = std::getenv("VEXA_MODEL_DIR");
  if (folder == nullptr || *folder == '\0') {
    throw std::runtime_error("no model " + name.string() + ": VEXA_MODEL_DIR is not set");
  }
  std::filesystem::path file = std::filesystem::path(folder) / name;
  if (!std::filesystem::is_regular_file(file)) throw std::runtime_error("no model file " + file.string());
  return file;
}

/// VEXA_ENGINE chooses what answers: "onnx" (or nothing) runs the model; the others need none.
enum class EngineKind { kOnnx, kFixed, kRecorded };
EngineKind engine_kind() {
  const char* name = std::getenv("VEXA_ENGINE");
  if (name == nullptr || *name == '\0' || std::string_view(name) == "onnx") return EngineKind::kOnnx;
  if (std::string_view(name) == "fixed") return EngineKind::kFixed;
  if (std::string_view(name) == "recorded") return EngineKind::kRecorded;
  throw std::runtime_error("VEXA_ENGINE is \"" + std::string(name) +
                           "\", not \"onnx\", \"fixed\" or \"recorded\"");
}

std::filesystem::path bundle_folder() {
  const char* folder = std::getenv("VEXA_BUNDLE");
  if (folder == nullptr || *folder == '\0') {
    throw std::runtime_error("no recorded session: VEXA_BUNDLE is not set");
  }
  return folder;
}

const std::string& only_name(const std::vector<std::string>& names, const char* what) {
  if (names.size() != 1) throw std::runtime_error(std::string("one ") + what + " name is expected");
  return names[0];
}

class Session final : public vexa::VexaSession {
 public:
  void reserved1() override {}
  void reserved2() override {}
  void reserved3() override {}
  void reserved6() override {}
  void reserved7() override {}

  int32_t open(vexa::VexaOptionsV2 options) override {
    std::string advice;
    try {
      engine_.reset();
      switch (engine_kind()) {
        case EngineKind::kFixed:
          engine_ = make_fixed_engine();
          return kSuccess;
        case EngineKind::kRecorded:
          return open_recorded();
        case EngineKind::kOnnx:
          advice = " (./dev network makes the models)";
          open_engine(model_file(options.modelPath), options);
          return kSuccess;
      }
    } catch (const std::exception& error) {
      report(error.what() + advice);
    } catch (...) {
      report("the model " + options.modelPath + " could not be opened" + advice);
    }
    return kFailure;
  }

  int32_t execute(std::vector<vexa::DataBuffer>& inputs, std::vector<vexa::DataBuffer>& outputs) override {
    try {
      if (engine_ == nullptr) throw std::runtime_error("no model is open");
      if (inputs.size() != 1) throw std::runtime_error("one input is expected");
      outputs.push_back(engine_->run(inputs[0]));
      return kSuccess;
    } catch (const std::exception& error) {
      report(std::string("the run failed: ") + error.what());
    } catch (...) {
      report("the run failed");
    }
    return kFailure;
  }

  void close() override { engine_.reset(); }

 private:
  void open_engine(const std::filesystem::path& file, const vexa::VexaOptionsV2& options) {
    std::unique_ptr<Engine> engine = make_onnx_engine();
    try {
      engine->open(file, only_name(options.inputNames, "input"), only_name(options.outputNames, "output"));
    } catch (const std::exception& error) {
      throw std::runtime_error("the model file " + file.string() + " cannot be used: " + error.what());
    }
    engine_ = std::move(engine);
  }

  int32_t open_recorded() {
    const std::filesystem::path folder = bundle_folder();
    RecordedSession recorded = open_recorded_session(folder);
    if (recorded.open_result == kFailure) {
      throw std::runtime_error("the model did not open when " + folder.string() + " was recorded");
    }
    engine_ = std::move(recorded.engine);
    return std::max(recorded.open_result, kSuccess);
  }

  std::unique_ptr<Engine> engine_;
};

}  // namespace
}  // namespace morvale::runtime

extern "C" MORVALE_API vexa::VexaSession* CreateVexaSession() { return new morvale::runtime::Session; }

extern "C" MORVALE_API void DestroyVexaSession(vexa::VexaSession* session) {
  delete static_cast<morvale::runtime::Session*>(session);
}
