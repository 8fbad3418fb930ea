#include "replay/replay_jobs.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <thread>

#include "common/command.h"
#include "common/command_line.h"
#include "common/interrupt.h"
#include "common/progress.h"
#include "common/words.h"
#include "replay/replay_lines.h"
#include "replay/replay_run.h"
#include "report/index_page.h"
#include "session/printable.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

/// A file's or folder's whole path, also of "recordings/one/", "." and "..".
fs::path whole_path(const std::string& input) {
  const fs::path path = fs::absolute(input).lexically_normal();
  return path.has_filename() ? path : path.parent_path();
}

/// The deepest folder that holds all inputs.
fs::path common_folder(const std::vector<std::string>& inputs) {
  fs::path folder = whole_path(inputs.front()).parent_path();
  for (const std::string& input : inputs) {
    const fs::path path = whole_path(input).parent_path();
    const auto end = std::mismatch(folder.begin(), folder.end(), path.begin(), path.end()).first;
    fs::path both;
    for (auto part = folder.begin(); part != end; ++part) both /= *part;
    folder = both;
  }
  return folder;
}

/// What each input is called among the outputs: its path below the folder that holds them all. Devices name
/// their recordings alike.
std::vector<std::string> output_names(const ReplayOptions& options) {
  const std::vector<std::string>& inputs = options.inputs;
  if (options.record.empty() && options.report.empty()) return inputs;
  const fs::path folder = common_folder(inputs);
  std::vector<std::string> names;
  for (const std::string& input : inputs) {
    names.push_back(whole_path(input).lexically_relative(folder).string());
    if (std::find(names.begin(), names.end() - 1, names.back()) != names.end() - 1)
      throw UsageError(input + " is given twice.");
  }
  return names;
}

std::string inside(const std::string& folder, const std::string& name) {
  return folder.empty() ? "" : (fs::path(folder) / name).string();
}

/// Behind a long input the outputs of so many jobs wait in open files; then nobody starts, since a process
/// may have about a thousand files open.
constexpr size_t kMostWaiting = 256;

/// One input's process. Its output waits in files without a name until its turn comes.
struct Job {
  pid_t process = -1;
  std::FILE* output = nullptr;
  std::FILE* words = nullptr;
  int status = -1;   ///< -1: still running
  std::string said;  ///< its words, once they are passed on
};

[[noreturn]] void run_child(const ReplayOptions& options, const Job& job) {
  dup2(fileno(job.output), STDOUT_FILENO);
  dup2(fileno(job.words), STDERR_FILENO);
  int status = kExitFailed;
  try {
    status = replay_one(options);
  } catch (const UsageError& error) {
    status = kExitUsage;
    complain(error.what());
  } catch (const std::exception& error) {
    complain(error.what());
  }
  std::fflush(nullptr);
  _exit(status);
}

Job start(const ReplayOptions& options, const std::string& input, const std::string& name) {
  Job job;
  job.output = std::tmpfile();
  job.words = std::tmpfile();
  if (job.output == nullptr || job.words == nullptr)
    throw RunError("no temporary file can be made; check TMPDIR.");
  ReplayOptions own = options;
  own.inputs = {input};
  own.heading = false;  // one for all of them
  own.record = inside(options.record, name);
  own.report = inside(options.report, name);
  job.process = fork();
  if (job.process < 0) throw RunError("no process can be started; take fewer --jobs.");
  if (job.process == 0) run_child(own, job);
  return job;
}

void pour(std::FILE* from, std::FILE* to, std::string* copy = nullptr) {
  char bytes[1 << 16];
  std::rewind(from);
  for (size_t count; (count = std::fread(bytes, 1, sizeof bytes, from)) > 0;) {
    if (copy != nullptr) copy->append(bytes, count);
    if (std::fwrite(bytes, 1, count, to) != count) throw RunError("the output cannot be written.");
  }
  std::fclose(from);
  if (std::fflush(to) != 0) throw RunError("the output cannot be written.");
}

/// The sentence in which a replay says how it went.
std::string closing_words(const Job& job, const std::string& input) {
  const std::string opening = "morvale: " + morvale::session::printable(input) + ": ";
  const size_t begin = job.said.rfind(opening);
  if (begin == std::string::npos) return job.status == kExitDone ? "" : "failed";
  const size_t from = begin + opening.size();
  return job.said.substr(from, job.said.find('\n', from) - from);
}

/// One page that leads to all reports.
void write_report_index(const ReplayOptions& options, const std::vector<std::string>& names,
                        const std::vector<Job>& jobs) {
  constexpr size_t kPictures = 12'000'000;  // bytes; behind many reports the last have none here
  std::vector<IndexEntry> entries;
  size_t taken = 0;
  for (size_t at = 0; at < jobs.size(); ++at) {
    IndexEntry entry = entry_of_report(options.report, names[at]);
    entry.good = jobs[at].status == kExitDone;
    const std::string words = closing_words(jobs[at], options.inputs[at]);
    taken += entry.picture.size();
    if (taken > kPictures) entry.picture.clear();
    if (!words.empty()) entry.facts.insert(entry.facts.begin(), words);
    entries.push_back(std::move(entry));
  }
  if (!fs::is_directory(options.report)) return;  // not one of them came to a frame
  write_index(options.report, std::to_string(entries.size()) + " reports", entries);
  complain("the index is " + (fs::path(options.report) / "index.html").string() + ".");
}

/// Waits for any of them to end. Asked to stop, it passes the wish on: a terminal's Ctrl-C reaches all of
/// them, a signal to this process alone does not.
void wait_for_one(std::vector<Job>& jobs) {
  constexpr auto kPause = std::chrono::milliseconds(10);
  int state = 0;
  pid_t ended = 0;
  for (bool told = false; (ended = waitpid(-1, &state, WNOHANG)) == 0; std::this_thread::sleep_for(kPause)) {
    if (told || Interrupt::asked() == 0) continue;
    for (const Job& job : jobs)
      if (job.status < 0) kill(job.process, SIGTERM);
    told = true;
  }
  for (Job& job : jobs)
    if (job.process == ended) job.status = WIFEXITED(state) ? WEXITSTATUS(state) : 128 + WTERMSIG(state);
}

}  // namespace

int replay_many(const ReplayOptions& options) {
  const std::vector<std::string> names = output_names(options);
  // A caller that ignores SIGCHLD hands that down: children's statuses would be lost and we would wait
  // forever.
  std::signal(SIGCHLD, SIG_DFL);
  std::vector<Job> jobs;
  Progress progress(options.inputs.size());
  const Interrupt start_no_more;
  if (options.format == LineFormat::kCsv) print_text(csv_heading(options.times));
  size_t poured = 0;
  int highest = kExitDone;
  std::vector<std::string> failed;
  const auto running = [&] {
    return std::count_if(jobs.begin(), jobs.end(), [](const Job& job) { return job.status < 0; });
  };
  while (true) {
    const bool more = jobs.size() < options.inputs.size() && Interrupt::asked() == 0;
    const bool room = jobs.size() - poured < kMostWaiting || running() == 0;
    if (more && room && running() < options.jobs) {
      progress.next(options.inputs[jobs.size()]);
      std::fflush(nullptr);
      jobs.push_back(start(options, options.inputs[jobs.size()], names[jobs.size()]));
      continue;
    }
    if (running() == 0) break;
    wait_for_one(jobs);
    for (; poured < jobs.size() && jobs[poured].status >= 0; ++poured) {
      progress.clear();
      pour(jobs[poured].words, stderr, &jobs[poured].said);
      pour(jobs[poured].output, stdout);
      highest = std::max(highest, jobs[poured].status);
      if (jobs[poured].status != kExitDone) failed.push_back(options.inputs[poured]);
    }
  }
  if (!options.report.empty()) write_report_index(options, names, jobs);
  if (!failed.empty())
    complain(std::to_string(failed.size()) + " of " + std::to_string(options.inputs.size()) +
             " inputs did not end well: " + name_list(failed) + ".");
  return highest;
}

}  // namespace tool
