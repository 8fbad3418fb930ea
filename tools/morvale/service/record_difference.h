/// How a replay's records differ from the recorded ones.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

#include "service/camera_service.h"
#include "session/bundle.h"

namespace tool {

/// The first thing that differs between two results of a frame.
struct RecordDifference {
  int frame = 0;
  std::string field;             ///< "process" or a field of the record
  std::optional<size_t> offset;  ///< in the record
  int64_t expected = 0, got = 0;

  /// "frame 5: meta[0].hsv[0] (byte 32) is 2, recorded as 1"
  std::string text() const;
};

std::optional<RecordDifference> difference(int frame, const morvale::session::FrameOutput& recorded,
                                           const FrameReport& report);

/// Over all frames of a replay.
class RecordComparison {
 public:
  void add(int frame, const morvale::session::FrameOutput& recorded, const FrameReport& report);

  int frames() const { return frames_; }
  int differing() const { return differing_; }
  const std::optional<RecordDifference>& first() const { return first_; }
  int first_index() const { return first_index_; }  ///< of first(), counted in the order of the replay

 private:
  int frames_ = 0, differing_ = 0, first_index_ = 0;
  std::optional<RecordDifference> first_;
};

}  // namespace tool
