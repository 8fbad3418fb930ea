/// `morvale_device_bench`: the time that each kernel and a frame of each camera take, on a device. The jobs
/// are those whose instructions are counted (bench/instructions).
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <string>

#include "bench/instructions/probe_jobs.h"
#include "kernels/kernel_set.h"

namespace {

using Clock = std::chrono::steady_clock;
using Microseconds = std::chrono::duration<double, std::micro>;

constexpr Microseconds kBatch{2'000};
constexpr int kBatches = 25;

double microseconds_of(const probe::Work& work, int times) {
  const Clock::time_point start = Clock::now();
  for (int k = 0; k < times; ++k) work();
  return Microseconds(Clock::now() - start).count() / times;
}

/// The best of several batches: whatever else runs on the device only makes it slower.
double best_time(const probe::Work& work) {
  work();
  const double once = std::max(microseconds_of(work, 1), 0.05);
  const int times = std::max(1, static_cast<int>(kBatch.count() / once));
  double best = once;
  for (int k = 0; k < kBatches; ++k) best = std::min(best, microseconds_of(work, times));
  return best;
}

}  // namespace

int main() {
  // The library prints lines of its own to standard output.
  std::FILE* const out = fdopen(dup(STDOUT_FILENO), "w");
  const int nowhere = open("/dev/null", O_WRONLY);
  if (out == nullptr || nowhere < 0 || dup2(nowhere, STDOUT_FILENO) < 0) return 1;

  std::fprintf(out, "%-24s", "microseconds");
  for (const morvale::KernelSet* set : morvale::runnable_kernels())
    std::fprintf(out, "%12s", std::string(set->name).c_str());
  for (const probe::Job& job : probe::jobs()) {
    std::fprintf(out, "\n%-24s", job.name);
    for (const morvale::KernelSet* set : morvale::runnable_kernels()) {
      morvale::use_kernels(set->name);
      std::fprintf(out, "%12.1f", best_time(job.make()));
      std::fflush(out);
    }
  }
  std::fputs("\n", out);
  return 0;
}
