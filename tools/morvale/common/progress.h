/// A progress line on standard error, for people only: nothing is written when it is not a terminal or when
/// the work is a single frame.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

namespace tool {

class Progress {
 public:
  /// `frames` absent: their number is not known.
  explicit Progress(std::optional<size_t> frames);
  ~Progress() { clear(); }
  Progress(const Progress&) = delete;
  Progress& operator=(const Progress&) = delete;

  /// Announces the next frame, with the rate and, where the number is known, the time left.
  void next(const std::string& name);

  /// Takes the line away, before anything else is written to the terminal.
  void clear() const;

 private:
  using Clock = std::chrono::steady_clock;

  std::string rate() const;

  std::optional<size_t> frames_;
  size_t frame_ = 0;
  bool shown_;
  Clock::time_point start_ = Clock::now(), last_shown_ = {};
};

}  // namespace tool
