#include "platform/clock.h"

#include <sys/time.h>

#include <morvale/core/segmentation.h>

namespace morvale {

WallTime wall_time() {
  timeval now{};
  gettimeofday(&now, nullptr);
  return {static_cast<int64_t>(now.tv_sec), static_cast<int64_t>(now.tv_usec)};
}

int64_t elapsed_ms(WallTime t0, WallTime t1) {
  return (t1.seconds - t0.seconds) * 1000 + t1.microseconds / 1000 - t0.microseconds / 1000;
}

}  // namespace morvale

int64_t currentTimeInMilliseconds() {
  const morvale::WallTime now = morvale::wall_time();
  return now.seconds * 1000 + now.microseconds / 1000;
}
