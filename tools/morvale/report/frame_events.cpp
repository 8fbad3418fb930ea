#include "report/frame_events.h"

#include <algorithm>

#include "service/report_text.h"

namespace tool {

void EventFinder::add(const FrameReport& report, std::optional<double> network_ms) {
  follow(gated_, report.gated);
  follow(failed_, report.process != 0);
  follow(sluggish_, network_ms.value_or(0) >= kSluggishMs);
  // A gated frame clears the record and a failed one says nothing new: neither tells where the person is.
  // Not by humanRatio: a sleeve keeps it above 0 when nobody is found any more.
  const bool front = report.camera == Camera::kFront;
  // On the back camera personCount keeps its value where nobody is found; the record's box does not.
  const bool person = front ? !report.person_boxes.empty() : person_box(report.record).w > 0;
  if (!report.gated && report.process == 0 && person != person_) {
    events_.push_back({index_, person ? "found" : "lost", person ? "person found" : "person lost"});
    person_ = person;
  }
  ++index_;
}

void EventFinder::follow(State& state, bool on) {
  if (on && !state.on) events_.push_back({index_, state.kind, state.kind});
  if (on && !state.on) state.begin = index_;
  if (!on && state.on) end(state);
  state.on = on;
}

/// Writes into the state's event how long it lasted.
void EventFinder::end(const State& state) {
  const auto event = std::find_if(events_.rbegin(), events_.rend(), [&](const FrameEvent& e) {
    return std::string_view(e.kind) == state.kind;
  });
  const int frames = index_ - state.begin;
  event->text = std::string(state.kind) + (frames == 1 ? "" : ", " + std::to_string(frames) + " frames");
}

std::vector<FrameEvent> EventFinder::events() const {
  EventFinder ended = *this;
  for (State* state : {&ended.gated_, &ended.failed_, &ended.sluggish_}) ended.follow(*state, false);
  std::stable_sort(ended.events_.begin(), ended.events_.end(),
                   [](const FrameEvent& a, const FrameEvent& b) { return a.index < b.index; });
  return ended.events_;
}

}  // namespace tool
