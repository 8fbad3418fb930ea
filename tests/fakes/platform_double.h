/// Everything that the library takes from its platform, scripted and recorded: log, properties, wall clock
/// and neural runtime. One set a process; CoreFixture resets it before every test.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include <morvale/morvale.h>

namespace fakes {

constexpr int kDebug = 3;
constexpr int kInfo = 4;
constexpr int kError = 6;

struct LogLine {
  int priority;
  std::string text;
  std::string tag = "Morvale_capture";
  bool operator==(const LogLine&) const = default;
};
std::ostream& operator<<(std::ostream& out, const LogLine& line);

enum class Output {
  kLogits,    ///< one tensor with `logits`
  kNone,      ///< success, but no tensor
  kNullData,  ///< success, but a tensor without elements
};

struct Platform {
  // Log and properties.
  std::vector<LogLine> log;
  std::map<std::string, std::string> properties;

  // The clock stands still unless a script moves it.
  int64_t clock_us = 1'700'000'000'000'000;

  // Opened in place of /data/vendor/camera/inarray.raw.
  std::string input_file;

  // The sections of the system trace, "+" and their names where they begin, "-" where one ends.
  std::vector<std::string> trace;

  // What the runtime is to do.
  bool null_session = false;
  int32_t open_result = 0;
  int64_t open_us = 0;
  int32_t execute_result = 0;
  int64_t execute_us = 0;
  Output output = Output::kLogits;
  std::vector<float> logits;
  std::optional<std::vector<int32_t>> shape;  ///< what the tensor says; unset: the true one

  // What it saw: the calls in order, the options, and the lists of the last execute.
  std::vector<std::string> calls;
  vexa::VexaOptionsV2 options;
  std::vector<vexa::DataBuffer> inputs;
  std::size_t outputs_on_entry = 0;

  int count(const std::string& call) const;
};

Platform& platform();

}  // namespace fakes
