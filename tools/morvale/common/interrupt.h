#pragma once

namespace tool {

/// While it lives, Ctrl-C (and SIGTERM) only asks for an end, so that what is done can be kept. A second
/// Ctrl-C ends the program at once; a second SIGTERM does not.
class Interrupt {
 public:
  Interrupt();
  ~Interrupt();
  Interrupt(const Interrupt&) = delete;
  Interrupt& operator=(const Interrupt&) = delete;

  /// 0, or the signal that asked.
  static int asked();
};

}  // namespace tool
