/// How much memory an action needs at most, measured in a process of its own.
#pragma once

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>

namespace testing_memory {

template <class Action>
long peak_of_child(Action action) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    action();
    std::fflush(nullptr);
    _exit(0);
  }
  rusage usage{};
  int status = -1;
  if (child < 0 || wait4(child, &status, 0, &usage) != child || status != 0) return -1;
  return usage.ru_maxrss / 1024;
}

/// In MiB, beyond what the process has anyway; -1 when the action ended the process. What it expects must be
/// checked apart: failures in the other process are not seen here.
template <class Action>
long peak_mib(Action action) {
  const long before = peak_of_child([] {}), with = peak_of_child(action);
  return with < 0 ? -1 : with - before;
}

}  // namespace testing_memory
