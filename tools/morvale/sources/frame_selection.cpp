#include "sources/frame_selection.h"

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

namespace tool {

FrameSelection::FrameSelection(Open open, int start, int every, std::optional<int> frames, int repeat)
    : open_(std::move(open)),
      start_(start),
      every_(every),
      repeat_(repeat),
      frames_(frames),
      source_(open_()) {}

std::optional<SourceFrame> FrameSelection::next() {
  while (true) {
    std::optional<SourceFrame> frame = next_of_round();
    note_faults();
    if (frame) return frame;
    // A round without a frame would be followed by more of them.
    if (taken_ == 0 || ++round_ == repeat_) return std::nullopt;
    source_.reset();  // a source of videos must be alone
    source_ = open_();
    taken_ = 0;
  }
}

std::optional<SourceFrame> FrameSelection::next_of_round() {
  if (frames_ && taken_ == *frames_) return std::nullopt;
  if (!pass(taken_ == 0 ? start_ : every_ - 1)) return std::nullopt;
  std::optional<SourceFrame> frame = source_->next();
  if (frame) ++taken_;
  return frame;
}

bool FrameSelection::pass(int frames) {
  for (int i = 0; i < frames; ++i)
    if (!source_->skip()) return false;
  return true;
}

void FrameSelection::note_faults() {
  damaged_ = std::max(damaged_, source_->damaged_frames());
  if (source_->unusable().size() > unusable_.size()) unusable_ = source_->unusable();
}

std::optional<int> FrameSelection::count() const {
  const std::optional<int> all = source_->count();
  if (!all) return std::nullopt;
  const int left = std::max(*all - start_, 0);
  const int chosen = (left + every_ - 1) / every_;
  const int64_t delivered = int64_t{std::min(chosen, frames_.value_or(chosen))} * repeat_;
  return static_cast<int>(std::min<int64_t>(delivered, std::numeric_limits<int>::max()));
}

}  // namespace tool
