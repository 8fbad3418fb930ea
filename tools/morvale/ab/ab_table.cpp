#include "ab/ab_table.h"

#include <cstdio>

#include "common/words.h"
#include "replay/replay_lines.h"
#include "session/printable.h"

namespace tool {
namespace {

std::string with_unit(int64_t value, const std::string& unit) {
  return std::to_string(value) + (unit.empty() ? "" : " " + unit);
}

}  // namespace

std::string table_heading() { return "verdict  frames  changed  first change             recording\n"; }

std::string table_line(const Verdict& verdict) {
  const std::string first =
      verdict.first_field.empty() ? "" : std::to_string(verdict.first_frame) + " " + verdict.first_field;
  char text[96];
  std::snprintf(text, sizeof text, "%-7s  %6d  %7d  %-23s  ", name_of(verdict.outcome), verdict.frames,
                verdict.changed_frames, first.c_str());
  const std::string why = verdict.failure.empty() ? "" : ": " + morvale::session::printable(verdict.failure);
  return text + morvale::session::printable(verdict.recording) + why + "\n";
}

std::string totals_table(const std::vector<Verdict>& verdicts) {
  const std::vector<FieldTotal> totals = totals_of(verdicts);
  if (totals.empty()) return "";
  std::string table = "\nfield                   recordings    frames  largest change\n";
  for (const FieldTotal& total : totals) {
    char text[96];
    std::snprintf(text, sizeof text, "%-22s  %10d  %8lld  ", total.field.c_str(), total.recordings,
                  static_cast<long long>(total.frames));
    table += text + with_unit(total.largest, total.unit) + "\n";
  }
  return table;
}

std::string verdict_csv_heading() {
  return "recording,verdict,frames,changed_frames,first_frame,first_field,field,field_frames,field_first_"
         "frame,"
         "largest,unit,failure\n";
}

std::string verdict_csv(const Verdict& verdict) {
  const bool changed = !verdict.first_field.empty();
  const std::string begin = csv_text(verdict.recording) + "," + name_of(verdict.outcome) + "," +
                            std::to_string(verdict.frames) + "," + std::to_string(verdict.changed_frames) +
                            "," + (changed ? std::to_string(verdict.first_frame) : "") + "," +
                            verdict.first_field + ",";
  if (verdict.fields.empty()) return begin + ",,,,," + csv_text(verdict.failure) + "\n";
  std::string lines;
  for (const FieldChange& change : verdict.fields) {
    lines += begin + change.field + "," + std::to_string(change.frames) + "," +
             std::to_string(change.first_frame) + "," + std::to_string(change.largest) + "," + change.unit +
             ",\n";
  }
  return lines;
}

std::string summary(const std::vector<Verdict>& verdicts) {
  return counted(verdicts.size(), "recording") + ": " + std::to_string(count(verdicts, Outcome::kSame)) +
         " the same, " + std::to_string(count(verdicts, Outcome::kChanged)) + " changed, " +
         std::to_string(count(verdicts, Outcome::kFailed)) + " failed";
}

}  // namespace tool
