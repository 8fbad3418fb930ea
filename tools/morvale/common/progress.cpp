#include "common/progress.h"

#include <unistd.h>

#include <cstdio>

#include "session/printable.h"

namespace tool {
namespace {

constexpr double kSecondsBetween = 0.1;   ///< a terminal need not see every frame of a fast run
constexpr double kSecondsForARate = 0.5;  ///< before that a rate says nothing

double seconds(std::chrono::steady_clock::duration time) {
  return std::chrono::duration<double>(time).count();
}

std::string time_text(double left) {
  const auto whole = static_cast<long long>(left + 0.5);
  char text[48];
  if (whole < 60)
    std::snprintf(text, sizeof text, "%lld s", whole);
  else if (whole < 3600)
    std::snprintf(text, sizeof text, "%lld min %02lld s", whole / 60, whole % 60);
  else
    std::snprintf(text, sizeof text, "%lld h %02lld min", whole / 3600, whole / 60 % 60);
  return text;
}

}  // namespace

Progress::Progress(std::optional<size_t> frames)
    : frames_(frames), shown_(frames.value_or(2) > 1 && isatty(STDERR_FILENO) != 0) {}

void Progress::next(const std::string& name) {
  ++frame_;
  if (!shown_) return;
  const Clock::time_point now = Clock::now();
  if (frame_ > 1 && seconds(now - last_shown_) < kSecondsBetween) return;
  last_shown_ = now;
  const std::string count = std::to_string(frame_) + (frames_ ? "/" + std::to_string(*frames_) : "");
  std::fprintf(stderr, "\r\033[K[%s]%s %s", count.c_str(), rate().c_str(),
               morvale::session::printable(name).c_str());
}

std::string Progress::rate() const {
  const double elapsed = seconds(last_shown_ - start_);
  if (elapsed < kSecondsForARate || frame_ < 2) return "";
  const double per_second = static_cast<double>(frame_ - 1) / elapsed;
  char text[64];
  std::snprintf(text, sizeof text, " %.*f frames/s", per_second < 10 ? 1 : 0, per_second);
  if (!frames_ || *frames_ < frame_) return text;
  return std::string(text) + ", " + time_text(static_cast<double>(*frames_ - frame_ + 1) / per_second) +
         " left";
}

void Progress::clear() const {
  if (shown_) std::fputs("\r\033[K", stderr);
}

}  // namespace tool
