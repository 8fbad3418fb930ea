#include "service/record_difference.h"

#include "service/record_fields.h"

namespace tool {

std::string RecordDifference::text() const {
  return "frame " + std::to_string(frame) + ": " + field +
         (offset ? " (byte " + std::to_string(*offset) + ")" : "") + " is " + std::to_string(got) +
         ", recorded as " + std::to_string(expected);
}

std::optional<RecordDifference> difference(int frame, const morvale::session::FrameOutput& recorded,
                                           const FrameReport& report) {
  if (recorded.process_result != report.process)
    return RecordDifference{frame, "process", std::nullopt, recorded.process_result, report.process};
  for (const RecordField& field : record_fields()) {
    const int64_t expected = value_of(recorded.result, field), got = value_of(report.record, field);
    if (expected != got) return RecordDifference{frame, field.name, field.offset, expected, got};
  }
  return std::nullopt;
}

void RecordComparison::add(int frame, const morvale::session::FrameOutput& recorded,
                           const FrameReport& report) {
  const std::optional<RecordDifference> found = difference(frame, recorded, report);
  if (found) {
    if (!first_) first_ = found, first_index_ = frames_;
    ++differing_;
  }
  ++frames_;
}

}  // namespace tool
