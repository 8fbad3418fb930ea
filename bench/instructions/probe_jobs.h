/// Every exported kernel and a frame of each camera on made-up data, small: valgrind is slow.
#pragma once

#include <functional>
#include <span>

namespace probe {

using Work = std::function<void()>;

struct Job {
  const char* name;
  std::function<Work()> make;  ///< the set-up, and the work on it
};

std::span<const Job> jobs();

}  // namespace probe
