#include "common/diverted_output.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <string>

#include "common/command.h"

namespace tool {

DivertedOutput::DivertedOutput(int descriptor, int target) : descriptor_(descriptor) {
  std::fflush(nullptr);
  original_ = fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
  const int opened = target >= 0 ? dup(target) : open("/dev/null", O_WRONLY);
  if (opened < 0) return;
  if (opened == descriptor) return;  // it was closed, and must not lead into the next file that is opened
  dup2(opened, descriptor);
  close(opened);
}

DivertedOutput::~DivertedOutput() {
  // What waits in stdio's buffers was meant for where the descriptor leads now.
  std::fflush(nullptr);
  if (original_ < 0) return;
  dup2(original_, descriptor_);
  close(original_);
}

void DivertedOutput::write_past(std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = ::write(original_, text.data(), text.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0)
      throw RunError(std::string("the output cannot be written: ") + std::strerror(errno) + ".");
    text.remove_prefix(static_cast<size_t>(written));
  }
}

}  // namespace tool
