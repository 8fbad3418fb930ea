/// Shares the rows of a picture out among threads.
#pragma once

#include <algorithm>
#include <atomic>
#include <functional>
#include <system_error>
#include <thread>
#include <vector>

namespace morvale::scene {

/// Some rows of a picture that follow each other.
struct Band {
  int number, top, rows;
};

/// What must be done in the order of the bands, whichever thread has which.
class Turns {
 public:
  /// Returns when all bands before this one have passed their turn on.
  void wait_for(const Band& band) {
    for (int now; (now = next_.load()) != band.number;) next_.wait(now);
  }
  void pass_on() {
    next_.fetch_add(1);
    next_.notify_all();
  }

 private:
  std::atomic<int> next_{0};
};

/// Calls work(worker, band, turns) for every band of `rows` rows of a picture of `height`, with a thread for
/// each of the workers as far as the system gives them. `work` must not throw, since other bands may wait for
/// its turn.
template <class Worker, class Work>
void share_out(std::vector<Worker>& workers, int height, int rows, Work work) {
  std::atomic<int> next{0};
  Turns turns;
  const auto run = [&](Worker& worker) noexcept {
    for (int number; (number = next.fetch_add(1)) * rows < height;)
      work(worker, Band{number, number * rows, std::min(rows, height - number * rows)}, turns);
  };
  std::vector<std::thread> threads;
  threads.reserve(workers.size());
  try {
    for (size_t i = 1; i < workers.size(); ++i) threads.emplace_back(run, std::ref(workers[i]));
  } catch (const std::system_error&) {
    // Those that have begun, and this one, do it all.
  }
  run(workers.front());
  for (std::thread& thread : threads) thread.join();
}

}  // namespace morvale::scene
