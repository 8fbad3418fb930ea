/// `morvale ab`: two builds of the library over many recordings.
#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "ab/ab_page.h"
#include "ab/ab_replay.h"
#include "ab/ab_results.h"
#include "ab/ab_table.h"
#include "ab/ab_workers.h"
#include "common/command.h"
#include "common/command_line.h"
#include "common/interrupt.h"
#include "common/options.h"
#include "common/progress.h"
#include "diff/diff_page.h"
#include "inspect/inspect_source.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

constexpr const char* kIntroduction =
    "Replays each recording through two builds of the library, and tells what the new one changed: the "
    "first\n"
    "frame and field, and how far each field is off, over one recording and over all of them.\n";

constexpr const char* kExamples = R"(Examples:
  morvale ab --old v1/libmorvale_capture.so --new build/release/src/libmorvale_capture.so recordings/*
  morvale ab --old a.so --new b.so --jobs 4 --report out recordings/*
      out/index.html: how far each field moved, the recordings that changed most, with their frames side by
      side, and a map of fields and recordings.
  morvale ab --old a.so --new b.so --tolerance 'meta[*].hsv[*]=2' recordings/*
      Means of colour may be 2 off; everything else must be equal.
  morvale ab --old a.so --new b.so --results night.jsonl recordings/*
      Stopped and started again it goes on behind the last recording in night.jsonl.
  morvale ab --merge shard1.jsonl shard2.jsonl --format csv > all.csv
      The results of several machines as one table.

Each recording is replayed in a process of its own for each library, as one core a process holds. A recording whose
replay ends early is told as failed, with what the replay said last.

Exit status: 0 all the same (or within the tolerances), 1 something changed or failed, 2 the command line or a file
cannot be used, 130 stopped by Ctrl-C.
)";

struct AbOptions {
  std::string old_library, new_library, results, report, format = "text";
  std::vector<std::string> recordings, tolerances;
  Tolerances limits;
  int jobs = 1;
  bool merge = false;
  std::string command;
};

void check(const AbOptions& options) {
  if (options.merge) {
    if (!options.old_library.empty() || !options.new_library.empty() || !options.results.empty())
      throw UsageError("--merge takes files of results alone; leave --old, --new and --results out.");
    return;
  }
  if (options.old_library.empty() || options.new_library.empty())
    throw UsageError("two libraries are compared: name them with --old and --new.");
  check_library(options.old_library);
  check_library(options.new_library);
}

std::optional<AbOptions> parse_ab_options(int argc, char** argv) {
  AbOptions options;
  const CommandLine line{
      "morvale ab",
      kIntroduction,
      kExamples,
      {{"RECORDING", &options.recordings,
        "Session bundles or packed recordings; with --merge files of results", "...", Required()},
       {"--old", &options.old_library, "The library as it was", "FILE"},
       {"--new", &options.new_library, "The library as it is", "FILE"},
       {"--tolerance", &options.tolerances, "FIELD may be off by N, * in FIELD is anything (repeatable)",
        "FIELD=N"},
       {"--jobs", &options.jobs, "So many recordings at a time (default: 1)", "N", Range{1, 256}},
       {"--results", &options.results, "Keep the verdicts in this file, and go on behind those in it",
        "FILE"},
       {"--merge", &options.merge, "Join files of results instead of replaying"},
       {"--report", &options.report, "Write index.html and comparisons into this folder", "DIR"},
       {"--format", &options.format, "A table (default), CSV or a line of JSON a recording",
        "text|csv|json"}}};
  if (!parse_options(line, argc, argv)) return std::nullopt;
  for (const std::string& tolerance : options.tolerances) options.limits.add(tolerance);
  options.command = command_text(argc, argv);
  check(options);
  return options;
}

std::string line_of(const Verdict& verdict, const std::string& format) {
  if (format == "csv") return verdict_csv(verdict);
  return format == "json" ? json_of(verdict).dump() + "\n" : table_line(verdict);
}

void print_heading(const std::string& format) {
  if (format != "json")
    std::fputs((format == "csv" ? verdict_csv_heading() : table_heading()).c_str(), stdout);
}

/// What an earlier run left in the file of results.
std::vector<Verdict> taken_up(const AbOptions& options, const std::string& head) {
  std::error_code none;
  if (options.results.empty() || !fs::exists(options.results, none)) return {};
  AbResults results = read_results(options.results);
  if (!results.head.empty() && results.head != head)
    throw UsageError(options.results + " holds results of other libraries or tolerances; name another file.");
  return std::move(results.verdicts);
}

std::vector<std::string> without(const std::vector<std::string>& recordings,
                                 const std::vector<Verdict>& judged) {
  std::set<std::string> known;
  for (const Verdict& verdict : judged) known.insert(verdict.recording);
  std::vector<std::string> left;
  for (const std::string& recording : recordings)
    if (known.insert(recording).second) left.push_back(recording);
  return left;
}

std::vector<Verdict> compare_libraries(const AbOptions& options) {
  const std::string head = results_head(options.old_library, options.new_library, options.tolerances);
  std::vector<Verdict> verdicts = taken_up(options, head);
  const std::vector<std::string> recordings = without(options.recordings, verdicts);
  if (!verdicts.empty())
    complain(options.results + ": " + std::to_string(verdicts.size()) + " of the verdicts are taken up.");
  std::optional<ResultsFile> file;
  if (!options.results.empty()) file.emplace(options.results, head);
  for (const Verdict& verdict : verdicts) std::fputs(line_of(verdict, options.format).c_str(), stdout);
  Progress progress(recordings.size());
  AbWorkers workers(options.jobs, recordings, [&](const std::string& recording) {
    return judge(options.old_library, options.new_library, recording, options.limits);
  });
  while (std::optional<Verdict> verdict = workers.next()) {
    progress.next(verdict->recording);
    if (file) file->add(*verdict);
    progress.clear();  // the table may share its terminal
    std::fputs(line_of(*verdict, options.format).c_str(), stdout);
    std::fflush(stdout);
    verdicts.push_back(std::move(*verdict));
  }
  return verdicts;
}

std::vector<Verdict> merge(const AbOptions& options) {
  AbResults all;
  std::set<std::string> known;  // two files may tell of one recording
  for (const std::string& file : options.recordings) {
    AbResults results = read_results(file);
    if (all.head.empty()) all.head = results.head;
    if (results.head != all.head && !results.head.empty())
      throw UsageError(file + " holds results of other libraries or tolerances than " +
                       options.recordings[0] + ".");
    for (Verdict& verdict : results.verdicts) {
      if (!known.insert(verdict.recording).second) continue;
      std::fputs(line_of(verdict, options.format).c_str(), stdout);
      all.verdicts.push_back(std::move(verdict));
    }
  }
  return std::move(all.verdicts);
}

/// The recordings that changed in most frames, each with its frames side by side.
std::vector<std::string> write_comparisons(const AbOptions& options, const std::vector<Verdict>& verdicts) {
  constexpr size_t kMost = 20;
  std::vector<std::string> links(verdicts.size());
  if (options.merge) return links;  // the libraries stand elsewhere
  std::vector<size_t> worst = worst_first(verdicts);
  std::erase_if(worst, [&](size_t i) { return verdicts[i].outcome == Outcome::kFailed; });
  worst.resize(std::min(worst.size(), kMost));
  for (const size_t i : worst) {
    const std::string& recording = verdicts[i].recording;
    RecordSource old_side = open_records(recording), new_side = open_records(recording);
    old_side.name += " (old)";
    new_side.name += " (new)";
    old_side.records = replay_through(options.old_library, recording, verdicts[i].frames).records;
    new_side.records = replay_through(options.new_library, recording, verdicts[i].frames).records;
    const std::string name = "changed_" + std::to_string(i);
    write_diff_page(old_side, new_side, Camera::kFront, options.command, fs::path(options.report) / name);
    links[i] = name + "/report.html";
  }
  return links;
}

int ab(const AbOptions& options) {
  const Interrupt keep_what_is_done;
  print_heading(options.format);
  const std::vector<Verdict> verdicts = options.merge ? merge(options) : compare_libraries(options);
  if (options.format == "text") std::fputs(totals_table(verdicts).c_str(), stdout);
  std::fflush(stdout);
  complain(summary(verdicts) + ".");
  if (Interrupt::asked() != 0) return kExitInterrupted;
  if (!options.report.empty()) {
    write_ab_page(options.report, verdicts, write_comparisons(options, verdicts), options.command);
    complain("the report is " + (fs::path(options.report) / "index.html").string() + ".");
  }
  return count(verdicts, Outcome::kSame) == static_cast<int>(verdicts.size()) ? kExitSame : kExitDifferent;
}

}  // namespace

int ab_main(int argc, char** argv) {
  return comparison_status([&] {
    const std::optional<AbOptions> options = parse_ab_options(argc, argv);
    return options ? ab(*options) : kExitSame;
  });
}

}  // namespace tool
