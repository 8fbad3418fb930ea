/// Keeps what others print away from the program's own output.
#pragma once

#include <string_view>

namespace tool {

/// While it lives, a descriptor leads elsewhere: to `target`, or nowhere when that is -1.
class DivertedOutput {
 public:
  explicit DivertedOutput(int descriptor, int target = -1);
  ~DivertedOutput();
  DivertedOutput(const DivertedOutput&) = delete;
  DivertedOutput& operator=(const DivertedOutput&) = delete;

  /// Writes all of `text` to where the descriptor led before, at once and unbuffered.
  void write_past(std::string_view text);

 private:
  int descriptor_, original_;
};

}  // namespace tool
