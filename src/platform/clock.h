/// The wall clock. Everything in the library that asks for the time asks here.
#pragma once

#include <cstdint>

namespace morvale {

struct WallTime {
  int64_t seconds;
  int64_t microseconds;  ///< 0..999999
};

WallTime wall_time();

/// Whole milliseconds from t0 to t1. Each microsecond part is divided on its own, so the figure may be one
/// off the true distance; the sluggish limit is defined on it.
int64_t elapsed_ms(WallTime t0, WallTime t1);

}  // namespace morvale
