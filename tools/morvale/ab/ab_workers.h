/// Recordings judged on several threads, and the verdicts handed on in their order.
#pragma once

#include <condition_variable>
#include <exception>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "ab/ab_verdict.h"

namespace tool {

class AbWorkers {
 public:
  /// At most `jobs` of them at a time; `judge_one` is called from their threads.
  AbWorkers(int jobs, std::vector<std::string> recordings,
            std::function<Verdict(const std::string&)> judge_one);

  /// The next one; none behind the last, or where Ctrl-C has asked for an end.
  std::optional<Verdict> next();

 private:
  void work();
  std::optional<size_t> begin_one();

  std::vector<std::string> recordings_;
  std::function<Verdict(const std::string&)> judge_one_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::map<size_t, Verdict> done_;
  size_t begun_ = 0, taken_ = 0, working_;
  std::exception_ptr error_;
  std::vector<std::jthread> threads_;
};

}  // namespace tool
