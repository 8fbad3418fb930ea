#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "sources/frame_source.h"

namespace tool {

/// The chosen frames of a source: from `start` on every `every`th, at most `frames`, all of that `repeat`
/// times.
class FrameSelection {
 public:
  using Open = std::function<std::unique_ptr<FrameSource>()>;

  FrameSelection(Open open, int start, int every, std::optional<int> frames, int repeat);

  std::optional<SourceFrame> next();
  /// How many there will be, where the source knows.
  std::optional<int> count() const;
  /// The files of the source's frames, where each has one of its own.
  std::vector<std::string> files() const { return source_->files(); }
  std::vector<std::string> passed_over() const { return source_->passed_over(); }
  /// In the round that had the most: each round reads the same.
  const std::vector<std::string>& unusable() const { return unusable_; }
  int damaged_frames() const { return damaged_; }
  /// The source's frames in their order, none left out at the front or between, none twice.
  bool is_plain() const { return start_ == 0 && every_ == 1 && repeat_ == 1; }

 private:
  std::optional<SourceFrame> next_of_round();
  bool pass(int frames);
  void note_faults();

  Open open_;
  int start_, every_, repeat_;
  std::optional<int> frames_;
  std::unique_ptr<FrameSource> source_;
  int round_ = 0, taken_ = 0;
  std::vector<std::string> unusable_;
  int damaged_ = 0;
};

}  // namespace tool
