/// Two rows of result records, word by word.
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "service/record_fields.h"

namespace tool {

/// How far two values of a field may be apart and still count as the same. Nothing, at first.
class Tolerances {
 public:
  /// `text` is FIELD=N; * in FIELD stands for any characters. A later one overrides an earlier one. Throws
  /// UsageError.
  void add(const std::string& text);

  int64_t of(size_t field) const { return limits_[field]; }

 private:
  std::array<int64_t, kRecordWords> limits_{};
};

/// How far two values of a field are apart. Hues are apart on the circle, words of the occupancy grid by the
/// cells that differ.
struct Distance {
  int64_t value = 0;
  const char* unit = "";  ///< "degrees", "cells" or nothing
};
Distance distance(size_t field, Camera camera, int64_t a, int64_t b);

/// Where two records part.
struct WordDifference {
  int frame = 0;
  size_t field = 0;  ///< index into record_fields()
  int64_t a = 0, b = 0;
  Distance apart;
  Camera camera = Camera::kFront;
};

struct FieldDifferences {
  size_t field = 0;
  int frames = 0, first_frame = 0;
  Distance largest;
  std::array<int, 33> by_size{};  ///< frames whose distance has so many binary digits
};

struct RecordsDiff {
  int compared = 0;          ///< frames that both have
  int differing_frames = 0;  ///< of these, beyond the tolerances
  int tolerated_frames = 0;  ///< of these, within the tolerances but not equal
  std::optional<WordDifference> first;
  std::vector<FieldDifferences> fields;  ///< those that differ, in the order of the record's bytes
};

/// `camera_of_frame` tells what the words of a frame mean.
RecordsDiff compare_records(std::span<const PersonWholeMeta> a, std::span<const PersonWholeMeta> b,
                            const Tolerances& tolerances, const std::function<Camera(int)>& camera_of_frame);

}  // namespace tool
