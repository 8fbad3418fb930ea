/// The moments of a session that somebody looks for.
#pragma once

#include <string>
#include <vector>

#include "service/camera_service.h"

namespace tool {

/// A network run of this many whole milliseconds or more is logged as sluggish.
constexpr double kSluggishMs = 31;

struct FrameEvent {
  int index;         ///< in the order of the session
  const char* kind;  ///< "gated", "failed", "sluggish", "found", "lost"
  std::string text;
};

/// Finds the events as the frames go by. A state that lasts (gated, failed, sluggish) is one event, where it
/// begins.
class EventFinder {
 public:
  void add(const FrameReport& report, std::optional<double> network_ms);
  /// In their order.
  std::vector<FrameEvent> events() const;

 private:
  struct State {
    const char* kind;
    bool on = false;
    int begin = 0;
  };
  void follow(State& state, bool on);
  void end(const State& state);

  int index_ = 0;
  bool person_ = false;
  State gated_{"gated"}, failed_{"failed"}, sluggish_{"sluggish"};
  std::vector<FrameEvent> events_;
};

}  // namespace tool
