/// `morvale_selfcheck`: whether the library computes here what it computes everywhere. One file with the
/// library inside and no other needs, for a device.
#include <fcntl.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <string>
#include <string_view>

#include "kernels/kernel_set.h"
#include "selfcheck/cases.h"
#include "selfcheck/crash.h"
#include "selfcheck/golden.h"

namespace {

constexpr const char* kHelp =
    "morvale_selfcheck: check that the library computes here, bit by bit, what it computes everywhere.\n\n"
    "Usage: morvale_selfcheck [--update FILE]\n\n"
    "Every set of kernels that this processor can run goes through the same list of kernels and whole "
    "frames,\n"
    "also with numbers too small for their full precision flushed to 0. The first that differs is named.\n\n"
    "  --update FILE  write the figures of this run as the ones that every build must give\n\n"
    "Exit status: 0 all as it must be, 1 something differs, 2 wrong usage.\n";

/// What takes minutes in an emulator does not take so long.
constexpr unsigned kPatienceSeconds = 900;

/// The library prints lines of its own to standard output; ours go to where it led before.
std::FILE* own_output() {
  std::FILE* const own = fdopen(dup(STDOUT_FILENO), "w");
  const int nowhere = open("/dev/null", O_WRONLY);
  if (nowhere >= 0) dup2(nowhere, STDOUT_FILENO);
  return own;
}

double seconds_since(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

int check(std::FILE* out) {
  morvale::selfcheck::name_crashes(fileno(out), kPatienceSeconds);
  int status = 0;
  for (const morvale::KernelSet* set : morvale::runnable_kernels()) {
    const std::string name(set->name);
    const auto start = std::chrono::steady_clock::now();
    morvale::use_kernels(name);
    const std::string difference = morvale::selfcheck::check();
    if (difference.empty()) {
      std::fprintf(out, "%-9s passed, %.1f s\n", name.c_str(), seconds_since(start));
    } else {
      std::fprintf(out, "%-9s FAILED: %s differs\n", name.c_str(), difference.c_str());
      status = 1;
    }
    std::fflush(out);
  }
  return status;
}

/// Written only when all sets of kernels agree.
int update(const char* path) {
  morvale::use_kernels("portable");
  const morvale::selfcheck::Figures figures = morvale::selfcheck::measure();
  for (const morvale::KernelSet* set : morvale::runnable_kernels()) {
    morvale::use_kernels(set->name);
    const std::string difference =
        morvale::selfcheck::first_difference(morvale::selfcheck::measure(), figures);
    if (difference.empty()) continue;
    std::fprintf(stderr, "morvale_selfcheck: the kernels %s and portable differ in %s: nothing is written.\n",
                 std::string(set->name).c_str(), difference.c_str());
    return 1;
  }
  std::ofstream file(path, std::ios::trunc);
  file << morvale::selfcheck::golden_text(figures);
  if (file.close(); file) return 0;
  std::fprintf(stderr, "morvale_selfcheck: %s cannot be written.\n", path);
  return 1;
}

}  // namespace

int main(int argc, char** argv) {
  std::FILE* const out = own_output();
  const std::string_view option = argc > 1 ? argv[1] : "";
  if (argc == 1) return check(out);
  if (argc == 3 && option == "--update") return update(argv[2]);
  if (option == "--help" || option == "-h") return std::fputs(kHelp, out), 0;
  std::fputs(kHelp, stderr);
  return 2;
}
