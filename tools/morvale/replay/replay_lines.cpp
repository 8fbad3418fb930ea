#include "replay/replay_lines.h"

#include <cstdio>

#include "service/record_fields.h"
#include "service/report_text.h"
#include "session/printable.h"

namespace tool {
namespace {

/// Nothing for a time that is not known.
std::string ms_text(std::optional<double> ms) {
  char text[32] = "";
  if (ms) std::snprintf(text, sizeof text, "%.3f", *ms);
  return text;
}

/// RFC 4180, for names, which go to terminals too: a text with commas, quotes or line ends stands in quotes,
/// its quotes twice.
std::string csv_text(const std::string& name) {
  const std::string text = morvale::session::printable(name);
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + '"';
}

}  // namespace

std::string replay_json_line(const std::string& source_name, int frame, const FrameReport& report,
                             const LineExtras& extras) {
  morvale::session::Json line = json_of(source_name, frame, report);
  line["gated"] = report.gated;
  if (!extras.picture.empty()) line["picture"] = extras.picture;
  if (extras.times) {
    const auto json = [](std::optional<double> ms) {
      return ms ? morvale::session::Json(std::stod(ms_text(ms))) : morvale::session::Json(nullptr);
    };
    line["networkMs"] = json(extras.times->network);
    line["processMs"] = json(extras.times->process);
    line["analysisMs"] = json(extras.times->analysis);
  }
  return text_line(line);
}

std::string csv_heading(bool times) {
  std::string line = "input,frame,picture,camera,process,gated,personCount";
  if (times) line += ",networkMs,processMs,analysisMs";
  for (const RecordField& field : record_fields()) line += "," + field.name;
  return line + "\r\n";
}

std::string csv_line(const std::string& source_name, int frame, const FrameReport& report,
                     const LineExtras& extras) {
  std::string line = csv_text(source_name) + "," + std::to_string(frame) + "," + csv_text(extras.picture) +
                     "," + (report.camera == Camera::kFront ? "front" : "back") + "," +
                     std::to_string(report.process) + "," + (report.gated ? "1" : "0") + "," +
                     std::to_string(report.person_boxes.size());
  if (extras.times)
    line += "," + ms_text(extras.times->network) + "," + ms_text(extras.times->process) + "," +
            ms_text(extras.times->analysis);
  for (const RecordField& field : record_fields())
    line += "," + std::to_string(value_of(report.record, field));
  return line + "\r\n";
}

}  // namespace tool
