/// A progress line on standard error, for people only: nothing is written when it is not a terminal or when
/// the work is a single frame.
#pragma once

#include <unistd.h>

#include <cstddef>
#include <cstdio>
#include <string>

namespace tool {

class Progress {
 public:
  explicit Progress(size_t frames) : frames_(frames), shown_(frames > 1 && isatty(STDERR_FILENO) != 0) {}
  ~Progress() { clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// Announces the next frame.
  void next(const std::string& name) {
    ++frame_;
    if (shown_) std::fprintf(stderr, "\r\033[K[%zu/%zu] %s", frame_, frames_, name.c_str());
  }

  /// Takes the line away, before anything else is written to the terminal.
  void clear() const {
    if (shown_) std::fputs("\r\033[K", stderr);
  }

 private:
  size_t frames_;
  size_t frame_ = 0;
  bool shown_;
};

}  // namespace tool
