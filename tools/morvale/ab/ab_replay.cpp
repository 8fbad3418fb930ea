#include "ab/ab_replay.h"

#include <dlfcn.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <memory>
#include <string_view>

#include "common/command.h"

namespace tool {
namespace {

using File = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

File nameless_file() {
  File file(std::tmpfile(), &std::fclose);
  if (!file) throw RunError("no temporary file can be made; check TMPDIR.");
  return file;
}

/// This process's environment with the library in front of the program's own.
std::vector<std::string> environment_with(const std::string& library) {
  constexpr std::string_view kPreload = "LD_PRELOAD=";
  std::vector<std::string> variables;
  std::string preload = std::string(kPreload) + library;
  for (char** variable = environ; *variable != nullptr; ++variable) {
    const std::string_view text = *variable;
    if (text.starts_with(kPreload))
      preload += ":" + std::string(text.substr(kPreload.size()));
    else
      variables.emplace_back(text);
  }
  variables.push_back(std::move(preload));
  return variables;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> list;
  for (std::string& text : texts) list.push_back(text.data());
  list.push_back(nullptr);
  return list;
}

/// Starts `morvale replay` with the library; its output goes into the files.
pid_t start_replay(const std::string& library, const std::string& recording, std::FILE* output,
                   std::FILE* words) {
  std::vector<std::string> arguments{"morvale", "replay", "--format", "records", "--", recording};
  std::vector<std::string> variables = environment_with(library);
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, fileno(output), STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, fileno(words), STDERR_FILENO);
  pid_t process = -1;
  const int error = posix_spawn(&process, "/proc/self/exe", &actions, nullptr, pointers(arguments).data(),
                                pointers(variables).data());
  posix_spawn_file_actions_destroy(&actions);
  if (error != 0) throw RunError("no process can be started; take fewer --jobs.");
  return process;
}

std::vector<PersonWholeMeta> records_in(std::FILE* file) {
  std::vector<PersonWholeMeta> records;
  std::rewind(file);
  for (PersonWholeMeta record; std::fread(&record, sizeof record, 1, file) == 1;) records.push_back(record);
  return records;
}

/// What the process said last, without the program's name.
std::string last_words(std::FILE* file) {
  std::string last;
  char line[4096];
  std::rewind(file);
  while (std::fgets(line, sizeof line, file) != nullptr) last = line;
  while (!last.empty() && last.back() == '\n') last.pop_back();
  return last.starts_with("morvale: ") ? last.substr(9) : last;
}

}  // namespace

void check_library(const std::string& library) {
  if (access(library.c_str(), R_OK) != 0)
    throw UsageError(library + " cannot be read; name a built libmorvale_capture.so.");
  if (library.find_first_of(" :") != std::string::npos)  // which end a name for the loader
    throw UsageError(library + " cannot be loaded from there; give it a path without blanks and colons.");
  // In a process of its own: a second library beside the program's would take over its state.
  const File words = nameless_file();
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child < 0) throw RunError("no process can be started.");
  if (child == 0) {
    void* loaded = dlopen(library.c_str(), RTLD_LAZY | RTLD_LOCAL);
    const char* error = loaded == nullptr ? dlerror() : nullptr;
    if (loaded != nullptr && dlsym(loaded, "PADSIZE") == nullptr) error = "it is no capture library";
    if (error != nullptr) std::fputs(error, words.get());
    std::fflush(words.get());
    _exit(error != nullptr);
  }
  int state = 0;
  waitpid(child, &state, 0);
  if (state != 0) throw UsageError(library + " cannot be used: " + last_words(words.get()) + ".");
}

AbReplay replay_through(const std::string& library, const std::string& recording, int frames) {
  const File output = nameless_file(), words = nameless_file();
  int state = 0;
  waitpid(start_replay(library, recording, output.get(), words.get()), &state, 0);
  AbReplay replay{records_in(output.get()), {}};
  if (replay.records.size() == static_cast<size_t>(frames)) return replay;
  replay.failure =
      WIFSIGNALED(state) ? "ended by signal " + std::to_string(WTERMSIG(state)) : last_words(words.get());
  if (replay.failure.empty()) replay.failure = "ended with exit status " + std::to_string(WEXITSTATUS(state));
  return replay;
}

}  // namespace tool
