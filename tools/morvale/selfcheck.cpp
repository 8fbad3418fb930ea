/// `morvale selfcheck`: whether the library computes here, bit by bit, what it computes everywhere.
#include <cstdio>

#include "common/command.h"
#include "common/options.h"
#include "service/library_check.h"

namespace tool {
namespace {

constexpr const char* kIntroduction =
    "Checks that the library computes here, bit by bit, what it computes in every build: every exported\n"
    "kernel and whole frames, over fixed inputs. Takes a few seconds, and needs neither models nor "
    "pictures.\n";

constexpr const char* kExamples = R"(Examples:
  morvale selfcheck
  MORVALE_KERNELS=portable morvale selfcheck
      The same with another set of kernels; morvale doctor lists them.

Says "passed", or names the first kernel or figure that differs.

Exit status: 0 all as it must be, 1 something differs.
)";

}  // namespace

int selfcheck_main(int argc, char** argv) {
  const CommandLine options{"morvale selfcheck", kIntroduction, kExamples, {}};
  if (!parse_options(options, argc, argv)) return kExitDone;
  const std::string difference = library_difference();
  if (!difference.empty())
    throw RunError("the library is not what it must be: with the kernels " + kernels_in_use() + ", " +
                   difference + " differs.");
  std::printf("passed with the kernels %s\n", kernels_in_use().c_str());
  return kExitDone;
}

}  // namespace tool
