#include "record/file_limit.h"

#include <ctime>

namespace morvale::record {
namespace {

bool is_pending(int signal) {
  sigset_t pending;
  return sigpending(&pending) == 0 && sigismember(&pending, signal) == 1;
}

}  // namespace

FileLimitHeldBack::FileLimitHeldBack() : pending_before_(is_pending(SIGXFSZ)) {
  sigemptyset(&signal_);
  sigaddset(&signal_, SIGXFSZ);
  pthread_sigmask(SIG_BLOCK, &signal_, &mask_before_);
}

FileLimitHeldBack::~FileLimitHeldBack() {
  constexpr timespec kNoWait{};
  if (!pending_before_ && is_pending(SIGXFSZ)) sigtimedwait(&signal_, nullptr, &kNoWait);
  pthread_sigmask(SIG_SETMASK, &mask_before_, nullptr);
}

}  // namespace morvale::record
