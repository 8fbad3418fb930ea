/// What two builds of the library made of one recording.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "diff/diff_records.h"
#include "session/json.h"

namespace tool {

enum class Outcome { kSame, kChanged, kFailed };
const char* name_of(Outcome outcome);

/// One field over a recording; the numbers of diff_records.h, by the field's name, so that a verdict can be
/// read back.
struct FieldChange {
  std::string field, unit;
  int frames = 0, first_frame = 0;
  int64_t largest = 0;
  std::vector<int> by_size;  ///< frames whose change has so many binary digits
};

struct Verdict {
  std::string recording;
  Outcome outcome = Outcome::kSame;
  int frames = 0, changed_frames = 0;
  int first_frame = 0;
  std::string first_field;  ///< empty: nothing changed
  std::vector<FieldChange> fields;
  std::string failure;  ///< of a failed one: which side, and what it said
};

/// Replays the recording through both libraries, each in a process of its own.
Verdict judge(const std::string& old_library, const std::string& new_library, const std::string& recording,
              const Tolerances& tolerances);

/// A line of the results file, and back. verdict_of throws JsonError.
morvale::session::Json json_of(const Verdict& verdict);
Verdict verdict_of(const morvale::session::Json& json);

/// All recordings together, in the order of the record's bytes.
struct FieldTotal {
  std::string field, unit;
  int recordings = 0;
  int64_t frames = 0, largest = 0;
  std::vector<int64_t> by_size;
};
std::vector<FieldTotal> totals_of(const std::vector<Verdict>& verdicts);

int count(const std::vector<Verdict>& verdicts, Outcome outcome);

/// The places of those that are not the same: the failed, then those that changed in most frames.
std::vector<size_t> worst_first(const std::vector<Verdict>& verdicts);

}  // namespace tool
