#include "selfcheck/crash.h"

#include <signal.h>
#include <unistd.h>

#include <cstring>
#include <initializer_list>

namespace morvale::selfcheck {
namespace {

int line_descriptor = -1;

void write_text(const char* text) {
  if (write(line_descriptor, text, std::strlen(text)) < 0) _exit(1);
}

void name_case(int signal_number) {
  write_text("FAILED: ");
  write_text(case_under_way);
  write_text(signal_number == SIGALRM ? " does not end\n" : " crashes\n");
  raise(signal_number);  // the handler is gone after its first call
}

}  // namespace

void name_crashes(int descriptor, unsigned seconds) {
  line_descriptor = descriptor;
  struct sigaction action = {};
  action.sa_handler = name_case;
  action.sa_flags = static_cast<int>(SA_RESETHAND | SA_NODEFER);
  for (const int signal_number : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGALRM})
    sigaction(signal_number, &action, nullptr);
  alarm(seconds);
}

}  // namespace morvale::selfcheck
