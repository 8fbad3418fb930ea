/// `morvale diff`: where two recordings part.
#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>
#include <vector>

#include "common/command.h"
#include "common/command_line.h"
#include "common/options.h"
#include "common/words.h"
#include "diff/diff_page.h"
#include "diff/diff_records.h"
#include "diff/diff_session.h"
#include "inspect/inspect_source.h"
#include "service/report_text.h"
#include "session/json.h"
#include "session/printable.h"

namespace tool {
namespace {

using morvale::session::Json;

constexpr const char* kIntroduction =
    "Compares the result records of two recordings, frame by frame: the first frame and field that differ,\n"
    "and how far each field is off.\n";

constexpr const char* kExamples = R"(Examples:
  morvale diff device.bundle workstation.bundle
      Two session bundles: their records, then a note on where inputs and scores part.
  morvale diff before/records.bin after/records.bin --camera back
      Bare records do not say whose they are: without --camera they are read as the front camera's.
  morvale diff a b --tolerance 'meta[*].hsv[*]=2' --tolerance humanRatio=1
      Means of colour may be 2 off and the share of people 1 point; everything else must be equal.
  morvale diff a b --tolerance '*=3' --tolerance ver=0
      Everything may be 3 off but ver; of several tolerances the last that names a field counts.
  morvale diff --records-only --format json a b
  morvale diff before after --report out
      out/report.html: the frames of both with what differs, side by side. Pictures are B's, else A's; label
      maps are shown where both bundles have them. The page knows no tolerances: it marks every difference.

A and B are folders with session.json or files of 288-byte records. Names of fields are those that morvale
inspect --offsets shows. Hues are apart on the circle: 359 and 1 by 2. Words of the back camera's occupancy
grid are apart by the cells that differ. A frame that only one side has is a difference. Notes on inputs,
calls, pixels, scores and label maps do not change the exit status.

Exit status: 0 the same (or within the tolerances), 1 different, 2 the command line, A or B cannot be used.
)";

struct DiffOptions {
  std::string a, b;
  Tolerances tolerances;
  Camera camera = Camera::kFront;
  bool json = false, records_only = false;
  std::string report;   ///< empty: no page
  std::string command;  ///< for the page, as it was typed
};

std::optional<DiffOptions> parse_diff_options(int argc, char** argv) {
  DiffOptions options;
  std::vector<std::string> tolerances;
  std::string camera = "front", format = "text";
  const CommandLine line{
      "morvale diff",
      kIntroduction,
      kExamples,
      {{"A", &options.a, "A session bundle or a file of records", "", Required()},
       {"B", &options.b, "What it is compared with", "", Required()},
       {"--tolerance", &tolerances, "FIELD may be off by N, * in FIELD is anything (repeatable)", "FIELD=N"},
       {"--camera", &camera, "Whose bare records are (default: front); a bundle says it itself",
        "front|back"},
       {"--records-only", &options.records_only, "Leave out the notes on inputs and scores"},
       {"--report", &options.report, "Write report.html into this folder: A, B and what differs", "DIR"},
       {"--format", &format, "Text (default) or one JSON object", "text|json"}}};
  const auto given = parse_options(line, argc, argv);
  if (!given) return std::nullopt;
  for (const std::string& tolerance : tolerances) options.tolerances.add(tolerance);
  options.camera = camera == "front" ? Camera::kFront : Camera::kBack;
  options.json = format == "json";
  if (given->contains("--report") && options.report.empty())
    throw UsageError("--report: the folder's name is empty.");
  options.command = command_text(argc, argv);
  return options;
}

/// Everything there is to say.
struct Difference {
  const RecordSource &a, &b;
  RecordsDiff records;
  std::vector<SessionNote> notes;  ///< of two bundles
  bool same() const { return records.differing_frames == 0 && a.records.size() == b.records.size(); }
};

/// What the words of a frame mean: a bundle's word, A's before B's, counts more than the flag.
Camera camera_at(const RecordSource& a, const RecordSource& b, int frame, Camera otherwise) {
  return a.bundle ? a.camera_at(frame, otherwise) : b.camera_at(frame, otherwise);
}

std::string text_of(const Distance& apart) {
  return std::to_string(apart.value) + (*apart.unit != '\0' ? " " : "") + apart.unit;
}

std::string first_text(const WordDifference& first) {
  const RecordField& field = record_fields()[first.field];
  std::string text = "first difference: frame " + std::to_string(first.frame) + ", " + field.name +
                     " at offset " + std::to_string(field.offset) + ": A " + std::to_string(first.a) +
                     ", B " + std::to_string(first.b) + ", " + text_of(first.apart) + " apart\n";
  const std::string& meaning = field.meaning(first.camera);
  return meaning.empty() ? text : text + "  " + meaning + "\n";
}

std::string field_table(const std::vector<FieldDifferences>& fields) {
  std::string table = "  field                   offset  frames   first  largest difference\n";
  for (const FieldDifferences& difference : fields) {
    const RecordField& field = record_fields()[difference.field];
    char text[96];
    std::snprintf(text, sizeof text, "  %-22s  %6zu  %6d  %6d  ", field.name.c_str(), field.offset,
                  difference.frames, difference.first_frame);
    table += text + text_of(difference.largest) + "\n";
  }
  return table;
}

std::string extra_frames_text(const RecordSource& a, const RecordSource& b) {
  if (a.records.size() == b.records.size()) return {};
  const int fewer = std::min(a.frame_count(), b.frame_count());
  const int more = std::max(a.frame_count(), b.frame_count());
  const std::string name = a.frame_count() > b.frame_count() ? "A" : "B", last = std::to_string(more - 1);
  if (more - fewer == 1) return "only " + name + " has frame " + last + "\n";
  return "only " + name + " has frames " + std::to_string(fewer) + " to " + last + "\n";
}

std::string side_text(const char* name, const RecordSource& source) {
  std::string text = std::string(name) + "  " + morvale::session::printable(source.name) + ": " +
                     counted(source.records.size(), "frame");
  if (const auto camera = source.camera())
    text += *camera == Camera::kFront ? ", front camera" : ", back camera";
  if (source.bundle && !source.bundle->warning().empty()) text += " (" + source.bundle->warning() + ")";
  return text + "\n";
}

std::string records_text(const Difference& difference) {
  const RecordsDiff& records = difference.records;
  const std::string text = extra_frames_text(difference.a, difference.b);
  const std::string compared = counted(static_cast<size_t>(records.compared), "record");
  if (records.first) {
    return text + first_text(*records.first) + std::to_string(records.differing_frames) + " of " + compared +
           (records.differing_frames == 1 ? " differs:\n" : " differ:\n") + field_table(records.fields);
  }
  if (records.tolerated_frames == 0) return text + "the same: " + compared + "\n";
  return text + "the same within the tolerances: " + compared + ", " +
         std::to_string(records.tolerated_frames) + " of them not equal\n";
}

std::string note_text(const SessionNote& note, int frames) {
  char name[32];
  std::snprintf(name, sizeof name, "%-12s", note.what);
  std::string text = name;
  if (note.first_frame >= 0)
    text += "differ, first in frame " + std::to_string(note.first_frame);
  else if (!note.detail.empty())
    text += "differs";
  else if (note.compared == 0 && frames > 0)
    text += "not compared: no frame has them on both sides";
  else
    text += std::string("the same") +
            (note.compared < frames ? " in " + std::to_string(note.compared) + " frames" : "");
  return text + (note.detail.empty() ? "" : ": " + note.detail) + "\n";
}

void print_text(const Difference& difference) {
  std::string text = side_text("A", difference.a) + side_text("B", difference.b) + "\n";
  text += records_text(difference);
  if (!difference.notes.empty()) text += "\n";
  for (const SessionNote& note : difference.notes) text += note_text(note, difference.records.compared);
  std::fputs(text.c_str(), stdout);
}

Json json_of(const WordDifference& first) {
  const RecordField& field = record_fields()[first.field];
  return {{"frame", first.frame},
          {"field", field.name},
          {"offset", field.offset},
          {"a", first.a},
          {"b", first.b},
          {"distance", first.apart.value},
          {"meaning", field.meaning(first.camera)}};
}

Json json_of(const std::vector<FieldDifferences>& fields) {
  Json list = Json::array();
  for (const FieldDifferences& difference : fields) {
    const RecordField& field = record_fields()[difference.field];
    list.push_back({{"field", field.name},
                    {"offset", field.offset},
                    {"frames", difference.frames},
                    {"firstFrame", difference.first_frame},
                    {"largest", difference.largest.value},
                    {"unit", difference.largest.unit}});
  }
  return list;
}

Json json_of(const std::vector<SessionNote>& notes) {
  Json list = Json::array();
  for (const SessionNote& note : notes) {
    const Json first = note.first_frame < 0 ? Json() : Json(note.first_frame);
    const bool same = note.first_frame < 0 && note.detail.empty();
    list.push_back({{"what", note.what},
                    {"same", same},
                    {"compared", note.compared},
                    {"firstFrame", first},
                    {"detail", note.detail}});
  }
  return list;
}

void print_json(const Difference& difference) {
  const RecordsDiff& records = difference.records;
  const Json json = {{"a", difference.a.name},
                     {"b", difference.b.name},
                     {"frames", Json::array({difference.a.frame_count(), difference.b.frame_count()})},
                     {"same", difference.same()},
                     {"compared", records.compared},
                     {"differing", records.differing_frames},
                     {"tolerated", records.tolerated_frames},
                     {"first", records.first ? json_of(*records.first) : Json()},
                     {"fields", json_of(records.fields)},
                     {"notes", json_of(difference.notes)}};
  std::fputs(text_line(json).c_str(), stdout);
}

int diff(const DiffOptions& options) {
  const RecordSource a = open_records(options.a), b = open_records(options.b);
  const auto camera = [&](int frame) { return camera_at(a, b, frame, options.camera); };
  Difference difference{a, b, compare_records(a.records, b.records, options.tolerances, camera), {}};
  if (a.bundle && b.bundle && !options.records_only) difference.notes = compare_sessions(a, b);
  options.json ? print_json(difference) : print_text(difference);
  std::fflush(stdout);
  if (!options.report.empty()) {
    write_diff_page(a, b, options.camera, options.command, options.report);
    complain("the report is " + (std::filesystem::path(options.report) / "report.html").string() + ".");
  }
  return difference.same() ? kExitSame : kExitDifferent;
}

}  // namespace

int diff_main(int argc, char** argv) {
  return comparison_status([&] {
    const std::optional<DiffOptions> options = parse_diff_options(argc, argv);
    return options ? diff(*options) : kExitSame;
  });
}

}  // namespace tool
