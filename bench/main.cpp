/// Runs every job in every way under Google Benchmark. What the page needs besides the times goes into the
/// context of the JSON: versions, the processor, and each job's line on its peers and its target.
#include <benchmark/benchmark.h>
#include <libyuv.h>
#include <malloc.h>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <opencv2/core.hpp>
#include <sstream>

#include "bench/job.h"
#include "kernels/kernel_set.h"

namespace bench {
namespace {

/// The set that the library chose for this processor, or the one that MORVALE_KERNELS asked for.
std::string best_set() {
  static const std::string name(morvale::kernels().name);
  return name;
}

void add(const std::string& name, const Way& way, const std::string& kernel_set,
         const GrowthPoint* point = nullptr) {
  const auto run = [=, pixels = point == nullptr ? GrowthPoint{} : *point](benchmark::State& state) {
    morvale::use_kernels(kernel_set);
    const Work work = way();
    work();  // first touch of the memory, and of the libraries' tables
    for (auto _ : state) {
      work();
      benchmark::ClobberMemory();
    }
    if (pixels.curve.empty()) return;
    state.counters["x"] = pixels.x;
    state.counters["source_pixels"] = pixels.source_pixels;
    state.counters["output_pixels"] = pixels.output_pixels;
  };
  benchmark::RegisterBenchmark(name.c_str(), run)->Unit(benchmark::kMicrosecond);
}

void add_job(const Job& job) {
  add(job.name + "/ours", job.ours, best_set());
  add(job.name + "/portable", job.ours, "portable");
  for (const Peer& peer : job.peers) add(job.name + "/" + peer.name, peer.way, best_set());
  add(job.name + "/floor", job.floor, best_set());

  std::string others;
  for (const Peer& peer : job.peers) {
    if (!peer.rival) others += (others.empty() ? "" : " ") + peer.name;
  }
  std::ostringstream targets;
  targets << job.target.of_fastest_peer << " " << job.target.of_portable;
  benchmark::AddCustomContext("job." + job.name + ".differs", job.differs);
  benchmark::AddCustomContext("job." + job.name + ".target", targets.str());
  benchmark::AddCustomContext("job." + job.name + ".not_rivals", others);
}

void add_growth(const GrowthPoint& point) {
  const std::string name = "growth." + point.curve + "." + std::to_string(point.x);
  add(name + "/ours", point.ours, best_set(), &point);
  add(name + "/portable", point.ours, "portable", &point);
  add(name + "/" + point.peer.name, point.peer.way, best_set(), &point);
}

std::string processor() {
  std::ifstream file("/proc/cpuinfo");
  for (std::string line; std::getline(file, line);) {
    if (line.starts_with("model name")) return line.substr(line.find(':') + 2);
  }
  return "unknown";
}

#if defined(__clang__)
constexpr const char* kCompiler = "clang " __clang_version__;
#else
constexpr const char* kCompiler = "GCC " __VERSION__;
#endif

void describe() {
  benchmark::AddCustomContext("processor", processor());
  benchmark::AddCustomContext("compiler", kCompiler);
  benchmark::AddCustomContext("libyuv", std::to_string(LIBYUV_VERSION));
  benchmark::AddCustomContext("opencv", CV_VERSION);
  benchmark::AddCustomContext("kernel_set", best_set());
}

/// One thread for all, and memory that is given back stays with the process: nobody pays page faults.
void level_the_field() {
  cv::setNumThreads(1);
  constexpr int kNever = 1 << 30;
  mallopt(M_MMAP_THRESHOLD, kNever);
  mallopt(M_TRIM_THRESHOLD, kNever);
}

}  // namespace
}  // namespace bench

int main(int argc, char** argv) {
  using namespace bench;
  level_the_field();
  benchmark::Initialize(&argc, argv);
  if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
  describe();
  for (const auto family :
       {color_jobs, shrink_jobs, plane_jobs, rotate_jobs, network_jobs, analysis_jobs, frame_jobs}) {
    for (const Job& job : family()) add_job(job);
  }
  for (const GrowthPoint& point : growth_points()) add_growth(point);

  // The half turn of a plane writes a line at every call, so standard output is not for us.
  if (std::freopen("/dev/null", "w", stdout) == nullptr) return 1;
  benchmark::ConsoleReporter console(benchmark::ConsoleReporter::OO_Tabular);
  console.SetOutputStream(&std::cerr);
  console.SetErrorStream(&std::cerr);
  benchmark::RunSpecifiedBenchmarks(&console);
  return 0;
}
