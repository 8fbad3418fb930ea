#include "replay/replay_jobs.h"

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <map>
#include <thread>

#include "common/command.h"
#include "common/command_line.h"
#include "common/interrupt.h"
#include "common/name_list.h"
#include "common/progress.h"
#include "replay/replay_lines.h"
#include "replay/replay_run.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

/// The name of the file or folder itself, also for "recordings/one/", "." and "..".
std::string base_name(const std::string& input) {
  const fs::path path = fs::absolute(input).lexically_normal();
  return (path.has_filename() ? path : path.parent_path()).filename().string();
}

std::string inside(const std::string& folder, const std::string& input) {
  return folder.empty() ? "" : (fs::path(folder) / base_name(input)).string();
}

/// The folders of two inputs must not be the same.
void check_names(const ReplayOptions& options) {
  if (options.record.empty() && options.report.empty()) return;
  std::map<std::string, std::string> inputs;
  for (const std::string& input : options.inputs) {
    const auto [other, fresh] = inputs.emplace(base_name(input), input);
    if (!fresh)
      throw UsageError(other->second + " and " + input +
                       " would be written into the same folder; replay them apart.");
  }
}

/// Behind a long input the outputs of so many jobs wait in open files; then nobody starts, since a process
/// may have about a thousand files open.
constexpr size_t kMostWaiting = 256;

/// One input's process. Its output waits in files without a name until its turn comes.
struct Job {
  pid_t process = -1;
  std::FILE* output = nullptr;
  std::FILE* words = nullptr;
  int status = -1;  ///< -1: still running
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

Job start(const ReplayOptions& options, const std::string& input) {
  Job job;
  job.output = std::tmpfile();
  job.words = std::tmpfile();
  if (job.output == nullptr || job.words == nullptr)
    throw RunError("no temporary file can be made; check TMPDIR.");
  ReplayOptions own = options;
  own.inputs = {input};
  own.heading = false;  // one for all of them
  own.record = inside(options.record, input);
  own.report = inside(options.report, input);
  job.process = fork();
  if (job.process < 0) throw RunError("no process can be started; take fewer --jobs.");
  if (job.process == 0) run_child(own, job);
  return job;
}

void pour(std::FILE* from, std::FILE* to) {
  char bytes[1 << 16];
  std::rewind(from);
  for (size_t count; (count = std::fread(bytes, 1, sizeof bytes, from)) > 0;)
    if (std::fwrite(bytes, 1, count, to) != count) throw RunError("the output cannot be written.");
  std::fclose(from);
  if (std::fflush(to) != 0) throw RunError("the output cannot be written.");
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
  check_names(options);
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
      jobs.push_back(start(options, options.inputs[jobs.size()]));
      continue;
    }
    if (running() == 0) break;
    wait_for_one(jobs);
    for (; poured < jobs.size() && jobs[poured].status >= 0; ++poured) {
      progress.clear();
      pour(jobs[poured].words, stderr);
      pour(jobs[poured].output, stdout);
      highest = std::max(highest, jobs[poured].status);
      if (jobs[poured].status != kExitDone) failed.push_back(options.inputs[poured]);
    }
  }
  if (!failed.empty())
    complain(std::to_string(failed.size()) + " of " + std::to_string(options.inputs.size()) +
             " inputs did not end well: " + name_list(failed) + ".");
  return highest;
}

}  // namespace tool
