#include "ab/ab_workers.h"

#include <algorithm>
#include <utility>

#include "common/interrupt.h"

namespace tool {

AbWorkers::AbWorkers(int jobs, std::vector<std::string> recordings,
                     std::function<Verdict(const std::string&)> judge_one)
    : recordings_(std::move(recordings)),
      judge_one_(std::move(judge_one)),
      working_(std::min(static_cast<size_t>(jobs), recordings_.size())) {
  const size_t threads = working_;
  for (size_t i = 0; i < threads; ++i) threads_.emplace_back([this] { work(); });
}

std::optional<Verdict> AbWorkers::next() {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return done_.contains(taken_) || working_ == 0; });
  if (error_) std::rethrow_exception(error_);
  const auto found = done_.extract(taken_);
  if (found.empty()) return std::nullopt;
  ++taken_;
  return std::move(found.mapped());
}

void AbWorkers::work() {
  try {
    for (std::optional<size_t> at; (at = begin_one());) {
      Verdict verdict = judge_one_(recordings_[*at]);
      const std::lock_guard lock(mutex_);
      if (Interrupt::asked() == 0)
        done_.emplace(*at, std::move(verdict));  // else its replays were stopped too
      changed_.notify_all();
    }
  } catch (...) {
    const std::lock_guard lock(mutex_);
    error_ = std::current_exception();
  }
  const std::lock_guard lock(mutex_);
  --working_;
  changed_.notify_all();
}

std::optional<size_t> AbWorkers::begin_one() {
  const std::lock_guard lock(mutex_);
  if (begun_ == recordings_.size() || Interrupt::asked() != 0 || error_) return std::nullopt;
  return begun_++;
}

}  // namespace tool
