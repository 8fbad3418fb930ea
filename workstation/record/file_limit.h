/// A service that records may run under a file-size limit.
#pragma once

#include <csignal>

namespace morvale::record {

/// While it lives, a write of this thread beyond the limit fails like any other and does not end the process:
/// the signal is held back, and the one that such a write raised is taken away. Signals of others stay as
/// they are.
class FileLimitHeldBack {
 public:
  FileLimitHeldBack();
  ~FileLimitHeldBack();
  FileLimitHeldBack(const FileLimitHeldBack&) = delete;
  FileLimitHeldBack& operator=(const FileLimitHeldBack&) = delete;

 private:
  sigset_t signal_, mask_before_;
  bool pending_before_;
};

}  // namespace morvale::record
