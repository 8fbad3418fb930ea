#include "common/interrupt.h"

#include <csignal>

namespace tool {
namespace {

volatile std::sig_atomic_t asked_by = 0;

void ask(int signal) { asked_by = signal; }

void on_signals(void (*handler)(int)) {
  struct sigaction action = {};
  action.sa_handler = handler;
  // A read or write that waits goes on; for Ctrl-C the handler works once.
  action.sa_flags = static_cast<int>(SA_RESTART | SA_RESETHAND);
  sigaction(SIGINT, &action, nullptr);
  // timeout, batch systems and our own --jobs send SIGTERM to a process and to its group: it arrives twice.
  action.sa_flags = SA_RESTART;
  sigaction(SIGTERM, &action, nullptr);
}

}  // namespace

Interrupt::Interrupt() { on_signals(ask); }
Interrupt::~Interrupt() { on_signals(SIG_DFL); }
int Interrupt::asked() { return asked_by; }

}  // namespace tool
