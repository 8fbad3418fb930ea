#include "service/library_check.h"

#include <unistd.h>

#include <cstdlib>

#include "common/diverted_output.h"
#include "kernels/processor.h"
#include "selfcheck/crash.h"
#include "selfcheck/golden.h"

namespace tool {
namespace {

/// It takes a second or two; under valgrind or an emulator minutes.
constexpr unsigned kPatienceSeconds = 900;

}  // namespace

std::string library_difference() {
  // The runtime opens no model, and hostile frames leave no lines in the log.
  setenv("VEXA_ENGINE", "fixed", 1);
  setenv("MORVALE_LOG", "S", 1);
  morvale::selfcheck::name_crashes(STDERR_FILENO, kPatienceSeconds);
  DivertedOutput library_output(STDOUT_FILENO);
  return morvale::selfcheck::check();
}

std::string kernels_in_use() { return std::string(morvale::choose_kernels().name); }

}  // namespace tool
