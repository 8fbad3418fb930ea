/// Does one job once, inside a function that callgrind can be told to watch, and between two system calls
/// that a plugin of an emulator can see. check_counts.py runs it.
///
///   instruction_probe --compiler          what it was compiled with, as "GNU 12 x86_64"
///   instruction_probe --list              the names of the jobs
///   instruction_probe KERNEL_SET JOB      the job, with one set of kernels
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "kernels/kernel_set.h"
#include "probe_jobs.h"

namespace {

#if defined(__clang__)
constexpr const char* kCompiler = "Clang";
constexpr int kCompilerMajor = __clang_major__;
#else
constexpr const char* kCompiler = "GNU";
constexpr int kCompilerMajor = __GNUC__;
#endif
#if defined(__x86_64__)
constexpr const char* kProcessor = "x86_64";
#elif defined(__aarch64__)
constexpr const char* kProcessor = "aarch64";
#else
constexpr const char* kProcessor = "other";
#endif

int fail(const std::string& message) {
  std::fprintf(stderr, "instruction_probe: %s\n", message.c_str());
  return 1;
}

}  // namespace

/// Collection is switched on while this runs. What it calls is not inlined here: it is made elsewhere.
extern "C" [[gnu::noinline]] void measured_job(const probe::Work& work) { work(); }

int main(int argc, char** argv) {
  const std::string first = argc > 1 ? argv[1] : "";
  if (argc == 2 && first == "--compiler") {
    std::printf("%s %d %s\n", kCompiler, kCompilerMajor, kProcessor);
    return 0;
  }
  if (argc == 2 && first == "--list") {
    for (const probe::Job& job : probe::jobs()) std::puts(job.name);
    return 0;
  }
  if (argc != 3) return fail("wants --compiler, --list, or a kernel set and a job");
  if (!morvale::use_kernels(first)) return fail("no such kernel set here: " + first);
  for (const probe::Job& job : probe::jobs()) {
    if (std::strcmp(job.name, argv[2]) != 0) continue;
    // The library writes lines of its own; into a file of no consequence, with a buffer that never flushes.
    if (std::freopen("/dev/null", "w", stdout) == nullptr) return fail("cannot silence standard output");
    const probe::Work work = job.make();
    work();  // dynamic linking and first calls
    getppid();
    measured_job(work);
    getppid();
    return 0;
  }
  return fail(std::string("no such job: ") + argv[2]);
}
