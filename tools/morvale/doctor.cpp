/// `morvale doctor`: what a bug report needs, and whether the library works here.
#include <nettle/base16.h>
#include <nettle/sha2.h>
#include <sys/utsname.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "common/command.h"
#include "common/options.h"
#include "kernels/processor.h"
#include "pictures/opencv_module.h"
#include "service/camera_service.h"
#include "service/library_check.h"
#include "session/build_note.h"
#include "session/json.h"
#include "session/printable.h"

namespace tool {
namespace {

namespace fs = std::filesystem;
using morvale::session::Json;

constexpr const char* kIntroduction =
    "Prints what a bug report needs: versions, processor, kernels, runtime, models, and a check of the "
    "library.\n";

constexpr const char* kExamples = R"(Examples:
  morvale doctor
  morvale doctor --json > doctor.json
      The same as one JSON object, for a bug report or to compare two machines.

A model's SHA-256 is what sha256sum prints for the file.

Exit status: 0 the check passed, 1 it did not, or the output cannot be written.
)";

std::string variable(const char* name) {
  const char* value = std::getenv(name);
  return value != nullptr && *value != '\0' ? value : "(not set)";
}

/// What the system says of its first processor under one of `keys`.
std::string processor_line(std::initializer_list<const char*> keys) {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    const size_t colon = line.find(':');
    if (colon == std::string::npos || colon + 2 > line.size()) continue;
    const std::string name = line.substr(0, line.find_first_of("\t:"));
    if (std::find(keys.begin(), keys.end(), name) != keys.end()) return line.substr(colon + 2);
  }
  return "unknown";
}

/// The features that kernels, the compiler or the network's runtime may use; the processor has many more.
std::string processor_features() {
  constexpr std::string_view kTelling[] = {
      "ssse3",    "sse4_1",      "sse4_2",   "avx",         "f16c",     "fma",        "avx2",
      "bmi2",     "avx512f",     "avx512bw", "avx512dq",    "avx512vl", "avx512vbmi", "avx512_vbmi2",
      "gfni",     "avx512_vnni", "avx_vnni", "avx512_bf16", "asimd",    "asimdhp",    "asimddp",
      "asimdfhm", "i8mm",        "bf16",     "sve",         "sve2"};
  std::istringstream all(processor_line({"flags", "Features"}));
  std::string telling;
  for (std::string name; all >> name;) {
    if (std::find(std::begin(kTelling), std::end(kTelling), name) == std::end(kTelling)) continue;
    telling += (telling.empty() ? "" : " ") + name;
  }
  return telling.empty() ? "unknown" : telling;
}

std::string system_name() {
  utsname name;
  if (uname(&name) != 0) return "unknown";
  return std::string(name.sysname) + " " + name.release + " " + name.machine;
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

std::string opencv_version() {
  try {
    return opencv().version();
  } catch (const RunError& error) {
    return error.what();
  }
}

/// Which answers the runtime beside this program gives.
std::string runtime() {
  const std::string engine = variable("VEXA_ENGINE");
  return engine == "(not set)" ? "the workstation's stand-in, engine onnx"
                               : "the workstation's stand-in, engine " + engine;
}

struct Model {
  std::string name, sha256;
  uintmax_t bytes = 0;
};

std::string sha256_of(const fs::path& file) {
  std::ifstream stream(file, std::ios::binary);
  sha256_ctx context;
  sha256_init(&context);
  std::vector<uint8_t> piece(1 << 16);
  while (stream.read(reinterpret_cast<char*>(piece.data()), std::ssize(piece)) || stream.gcount() > 0)
    sha256_update(&context, static_cast<size_t>(stream.gcount()), piece.data());
  if (stream.bad() || !stream.eof()) return "(cannot be read)";
  uint8_t digest[SHA256_DIGEST_SIZE];
  sha256_digest(&context, sizeof digest, digest);
  std::string text(BASE16_ENCODE_LENGTH(sizeof digest), '\0');
  base16_encode_update(text.data(), sizeof digest, digest);
  return text;
}

std::vector<Model> models_in(const std::string& folder) {
  std::vector<Model> models;
  std::error_code error;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, error)) {
    if (entry.path().extension() != ".onnx") continue;
    models.push_back({entry.path().filename().string(), sha256_of(entry.path()), entry.file_size(error)});
  }
  std::sort(models.begin(), models.end(), [](const Model& a, const Model& b) { return a.name < b.name; });
  return models;
}

/// Everything but the check, which may crash.
struct Facts {
  std::vector<std::pair<const char*, std::string>> lines;
  std::string model_folder;
  std::vector<Model> models;
};

Facts gather() {
  Facts facts;
  facts.lines = {{"morvale", MORVALE_VERSION},
                 {"library", morvale::session::library_identity()},
                 {"compiler", __VERSION__},
                 {"OpenCV", opencv_version()},
                 {"system", system_name()},
                 {"processor", processor_line({"model name", "CPU part"})},
                 {"cores", std::to_string(std::thread::hardware_concurrency())},
                 {"features", processor_features()},
                 {"kernels", kernels()},
                 {"runtime", runtime()},
                 {"VEXA_ENGINE", variable("VEXA_ENGINE")},
                 {"MORVALE_KERNELS", variable("MORVALE_KERNELS")},
                 {"debug property", variable("PERSIST_MORVALE_CAPTURE_DEBUG")}};
  facts.model_folder = model_folder(std::nullopt);
  facts.models = models_in(facts.model_folder);
  return facts;
}

std::string line(const char* name, const std::string& value) {
  char text[32];
  std::snprintf(text, sizeof text, "%-18s", name);
  return text + value + '\n';
}

std::string text_of(const Facts& facts) {
  std::string text;
  for (const auto& [name, value] : facts.lines) text += line(name, value);
  text += line("models in", facts.model_folder);
  if (facts.models.empty()) text += line("  model", "none: make them with ./dev network");
  for (const Model& model : facts.models) {
    text += line("  model",
                 morvale::session::printable(model.name) + ", " + std::to_string(model.bytes) + " bytes");
    text += line("    SHA-256", model.sha256);
  }
  return text;
}

Json json_of(const Facts& facts) {
  Json json = Json::object();
  for (const auto& [name, value] : facts.lines) json[name] = value;
  json["models in"] = facts.model_folder;
  json["models"] = Json::array();
  for (const Model& model : facts.models)
    json["models"].push_back({{"name", model.name}, {"bytes", model.bytes}, {"sha256", model.sha256}});
  return json;
}

}  // namespace

int doctor_main(int argc, char** argv) {
  bool as_json = false;
  const CommandLine options{"morvale doctor",
                            kIntroduction,
                            kExamples,
                            {{"--json", &as_json, "One JSON object in place of the lines"}}};
  if (!parse_options(options, argc, argv)) return kExitDone;
  const Facts facts = gather();
  // The facts stand before the check begins: should it crash, they are there.
  if (!as_json) std::fputs(text_of(facts).c_str(), stdout);
  std::fflush(stdout);
  const std::string difference = library_difference();
  const bool works = difference.empty();
  if (!as_json) {
    std::fputs(line("self-check", works ? "passed" : "FAILED: " + difference + " differs").c_str(), stdout);
  } else {
    Json json = json_of(facts);
    json["self-check"] = works;
    if (!works) json["differs"] = difference;
    std::puts(json.dump(2).c_str());
  }
  return works ? kExitDone : kExitFailed;
}

}  // namespace tool
