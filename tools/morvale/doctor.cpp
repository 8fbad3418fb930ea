/// `morvale doctor`: what a bug report needs, and whether the library works here.
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <opencv2/core/version.hpp>
#include <string>

#include "camera_service.h"
#include "command.h"
#include "command_line.h"
#include "diverted_output.h"
#include "kernels/processor.h"
#include "morvale.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

constexpr const char* kIntroduction =
    "Prints what a bug report needs: versions, processor, kernels, runtime, models, and a check of the "
    "library.\n";

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && *value != '\0' ? value : "(not set)";
}

std::string processor_name() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    if (line.rfind("model name", 0) == 0) return line.substr(line.find(':') + 2);
  }
  return "unknown";
}

std::string line(const char* name, const std::string& value) {
  char text[32];
  std::snprintf(text, sizeof text, "%-18s", name);
  return text + value + '\n';
}

std::string kernels() {
  std::string text;
  const morvale::KernelChoice choice = morvale::choose_kernels();
  for (const std::string_view name : morvale::runnable_kernel_names()) {
    text += (text.empty() ? "" : ", ") + std::string(name) + (name == choice.name ? " (in use)" : "");
  }
  if (!choice.refused.empty())
    text += "; MORVALE_KERNELS=" + std::string(choice.refused) + " cannot run here";
  return text;
}

std::string models() {
  std::string text;
  std::error_code error;
  const std::string folder = variable("VEXA_MODEL_DIR");
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    if (entry.path().extension() != ".onnx") continue;
    text += line("  model",
                 entry.path().filename().string() + ", " + std::to_string(entry.file_size(error)) + " bytes");
  }
  return line("models in", folder) +
         (text.empty() ? line("  model", "none: make them with ./dev network") : text);
}

/// A made-up portrait through the front road, whose figures are known.
bool library_works() {
  setenv("VEXA_ENGINE", "fixed", 1);
  Frame frame;
  frame.width = frame.stride = 640;
  frame.height = 480;
  frame.nv21.assign(640 * 480 * 3 / 2, 128);
  DivertedOutput library_output(1);
  CameraService service(Camera::kFront);
  const FrameReport report = service.analyze(frame, {});
  return report.process == 0 && report.record.ver == 1 && report.person_boxes.size() == 1 &&
         report.record.meta[0].faceYavg == 128 && report.record.meta[0].hsv[2] == 128;
}

}  // namespace

int doctor_main(int argc, char** argv) {
  CLI::App app(kIntroduction, "morvale doctor");
  app.footer("Exit status: 0 the check passed, 1 it did not.\n");
  if (!parse_command_line(app, argc, argv)) return kExitDone;
  try {
    choose_model_folder(std::nullopt);
  } catch (const RunError&) {
    // Told below, as a fact among others.
  }
  std::string text = line("morvale", MORVALE_VERSION) + line("compiler", __VERSION__) +
                     line("OpenCV", CV_VERSION) + line("processor", processor_name()) +
                     line("kernels", kernels());
  text += models() + line("VEXA_ENGINE", variable("VEXA_ENGINE")) +
          line("MORVALE_KERNELS", variable("MORVALE_KERNELS")) +
          line("debug property", variable("PERSIST_MORVALE_CAPTURE_DEBUG"));
  std::fputs(text.c_str(), stdout);
  std::fflush(stdout);
  const bool works = library_works();
  std::fputs(line("self-check", works ? "passed" : "FAILED").c_str(), stdout);
  return works ? kExitDone : kExitFailed;
}

}  // namespace tool
