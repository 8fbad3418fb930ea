#include "diff/diff_records.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstddef>
#include <cstdlib>
#include <string_view>

#include "common/command.h"

namespace tool {
namespace {

/// Whether `pattern`, in which * stands for any characters, describes all of `text`.
bool matches(std::string_view pattern, std::string_view text) {
  if (pattern.empty()) return text.empty();
  if (pattern[0] != '*')
    return !text.empty() && pattern[0] == text[0] && matches(pattern.substr(1), text.substr(1));
  for (size_t skipped = 0; skipped <= text.size(); ++skipped)
    if (matches(pattern.substr(1), text.substr(skipped))) return true;
  return false;
}

/// A field's place in its block of the record; ver and humanRatio are in none.
struct Place {
  int block = -1;
  size_t offset = 0;
};

Place place_of(size_t field) {
  const size_t offset = field * sizeof(int32_t);
  if (offset < offsetof(PersonWholeMeta, meta)) return {};
  const size_t within = offset - offsetof(PersonWholeMeta, meta);
  return {static_cast<int>(within / sizeof(PersonMeta)), within % sizeof(PersonMeta)};
}

bool is_hue(size_t field, Camera camera) {
  return camera == Camera::kFront && place_of(field).offset == offsetof(PersonMeta, hsv) &&
         place_of(field).block >= 0;
}

/// The back camera's grid fills the first nine box words behind block 0.
bool is_grid_word(size_t field, Camera camera) {
  constexpr size_t kGridWords = 9, kBoxWords = 4;
  const Place place = place_of(field);
  if (camera == Camera::kFront || place.block < 1 || place.offset < offsetof(PersonMeta, box)) return false;
  const size_t word = (place.offset - offsetof(PersonMeta, box)) / sizeof(int32_t);
  return static_cast<size_t>(place.block - 1) * kBoxWords + word < kGridWords;
}

/// Adds the differences of one frame to `comparison`. `totals` has an entry for each field.
class FrameComparer {
 public:
  FrameComparer(const Tolerances& tolerances, RecordsDiff& comparison)
      : tolerances_(tolerances), comparison_(comparison) {}

  void compare(int frame, const PersonWholeMeta& a, const PersonWholeMeta& b, Camera camera) {
    bool differs = false, tolerated = false;
    for (size_t field = 0; field < kRecordWords; ++field) {
      const RecordField& word = record_fields()[field];
      const int64_t left = value_of(a, word), right = value_of(b, word);
      if (left == right) continue;
      const Distance apart = distance(field, camera, left, right);
      // Hues of 0 and 360 are 0 apart, yet not the same bytes.
      const int64_t limit = tolerances_.of(field);
      const bool allowed = limit > 0 && apart.value <= limit;
      (allowed ? tolerated : differs) = true;
      if (!allowed) note({frame, field, left, right, apart, camera});
    }
    ++comparison_.compared;
    comparison_.differing_frames += differs;
    comparison_.tolerated_frames += tolerated && !differs;
  }

  void finish() {
    for (const FieldDifferences& total : totals_)
      if (total.frames > 0) comparison_.fields.push_back(total);
  }

 private:
  void note(const WordDifference& difference) {
    if (!comparison_.first) comparison_.first = difference;
    FieldDifferences& total = totals_[difference.field];
    if (total.frames++ == 0) total = {difference.field, 1, difference.frame, difference.apart, {}};
    ++total.by_size[static_cast<size_t>(std::bit_width(static_cast<uint64_t>(difference.apart.value)))];
    if (difference.apart.value > total.largest.value) total.largest = difference.apart;
  }

  const Tolerances& tolerances_;
  RecordsDiff& comparison_;
  std::array<FieldDifferences, kRecordWords> totals_{};
};

}  // namespace

void Tolerances::add(const std::string& text) {
  const size_t equals = text.rfind('=');
  int64_t limit = -1;
  if (equals != std::string::npos) {
    const char *begin = text.data() + equals + 1, *end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(begin, end, limit);
    if (error != std::errc() || stop != end) limit = -1;
  }
  if (limit < 0)
    throw UsageError("--tolerance: " + text + " is not FIELD=N with a whole number N, 0 or greater.");
  bool found = false;
  for (size_t field = 0; field < kRecordWords; ++field) {
    if (!matches(std::string_view(text).substr(0, equals), record_fields()[field].name)) continue;
    limits_[field] = limit;
    found = true;
  }
  if (!found)
    throw UsageError("--tolerance: no field is called " + text.substr(0, equals) +
                     "; morvale inspect --offsets lists them.");
}

Distance distance(size_t field, Camera camera, int64_t a, int64_t b) {
  constexpr int64_t kCircle = 360;
  const int64_t straight = std::abs(a - b);
  if (is_grid_word(field, camera))
    return {std::popcount(static_cast<uint32_t>(a) ^ static_cast<uint32_t>(b)), "cells"};
  const auto on_circle = [](int64_t value) { return value >= 0 && value <= kCircle; };
  if (is_hue(field, camera) && on_circle(a) && on_circle(b))
    return {std::min(straight, kCircle - straight), "degrees"};
  return {straight, ""};
}

RecordsDiff compare_records(std::span<const PersonWholeMeta> a, std::span<const PersonWholeMeta> b,
                            const Tolerances& tolerances, const std::function<Camera(int)>& camera_of_frame) {
  RecordsDiff comparison;
  FrameComparer comparer(tolerances, comparison);
  const size_t shared = std::min(a.size(), b.size());
  for (size_t i = 0; i < shared; ++i) {
    const int frame = static_cast<int>(i);
    comparer.compare(frame, a[i], b[i], camera_of_frame(frame));
  }
  comparer.finish();
  return comparison;
}

}  // namespace tool
