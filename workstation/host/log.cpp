/// The Android log on a workstation: one line a message on standard error, "E Morvale_capture: text".
#include "platform/log.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include <morvale/core/export.h>
#include "host/log_observer.h"

namespace {

constexpr int kVerbose = 2;
constexpr int kError = 6;
constexpr int kSilent = 8;
constexpr std::string_view kLetters = "VDIWEFS";  // priorities 2 (verbose) to 8 (silent)

struct Observer {
  morvale_log_observer call = nullptr;
  void* context = nullptr;
};
Observer log_observer;

/// The lowest priority that MORVALE_LOG lets through. Read at every call, so that a program may change its
/// mind.
int lowest_shown() {
  const char* setting = std::getenv("MORVALE_LOG");
  if (setting == nullptr || setting[0] == '\0' || setting[1] != '\0') return kError;
  const size_t index = kLetters.find(setting[0]);
  return index == std::string_view::npos ? kError : kVerbose + static_cast<int>(index);
}

char priority_letter(int priority) {
  return priority >= kVerbose && priority < kSilent ? kLetters[static_cast<size_t>(priority - kVerbose)]
                                                    : '?';
}

std::string format_text(const char* format, va_list arguments) {
  va_list measured;
  va_copy(measured, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, measured);
  va_end(measured);
  if (length <= 0) return {};
  std::vector<char> text(static_cast<size_t>(length) + 1);
  std::vsnprintf(text.data(), text.size(), format, arguments);
  return {text.data(), static_cast<size_t>(length)};
}

}  // namespace

/// Returns the number of bytes written, 0 for a message that the filter holds back.
extern "C" MORVALE_API int __android_log_print(int priority, const char* tag, const char* format, ...) {
  const bool shown = priority >= lowest_shown();
  if (!shown && log_observer.call == nullptr) return 0;
  va_list arguments;
  va_start(arguments, format);
  std::string text = format_text(format, arguments);
  va_end(arguments);
  while (!text.empty() && text.back() == '\n') text.pop_back();
  if (log_observer.call != nullptr) log_observer.call(priority, text.c_str(), log_observer.context);
  if (!shown) return 0;
  const std::string line = std::string{priority_letter(priority), ' '} + tag + ": " + text + '\n';
  // One write a line keeps lines of several threads whole.
  return static_cast<int>(std::fwrite(line.data(), 1, line.size(), stderr));
}

extern "C" MORVALE_API void morvale_host_observe_log(morvale_log_observer observer, void* context) {
  log_observer = {observer, context};
}
