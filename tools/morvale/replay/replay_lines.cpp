#include "replay/replay_lines.h"

#include <cstdio>

#include "service/record_fields.h"
#include "service/report_text.h"
#include "session/printable.h"

namespace tool {
namespace {

/// Nothing for a time that is not known.
std::string to_thousandths(std::optional<double> time) {
  char text[32] = "";
  if (time) std::snprintf(text, sizeof text, "%.3f", *time);
  return text;
}

morvale::session::Json json_time(std::optional<double> time) {
  return time ? morvale::session::Json(std::stod(to_thousandths(time))) : morvale::session::Json(nullptr);
}

}  // namespace

std::string csv_text(const std::string& name) {
  std::string text = morvale::session::printable(name);
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + '"';
}

std::string replay_json_line(const std::string& source_name, int frame, const FrameReport& report,
                             const LineExtras& extras) {
  morvale::session::Json line = json_of(source_name, frame, report);
  line["gated"] = report.gated;
  if (!extras.picture.empty()) line["picture"] = extras.picture;
  if (extras.seconds) line["seconds"] = json_time(extras.seconds);
  if (extras.times) {
    line["networkMs"] = json_time(extras.times->network);
    line["processMs"] = json_time(extras.times->process);
    line["analysisMs"] = json_time(extras.times->analysis);
  }
  return text_line(line);
}

std::string csv_heading(bool times) {
  std::string line = "input,frame,seconds,picture,camera,process,gated,personCount";
  if (times) line += ",networkMs,processMs,analysisMs";
  for (const RecordField& field : record_fields()) line += "," + field.name;
  return line + "\r\n";
}

std::string csv_line(const std::string& source_name, int frame, const FrameReport& report,
                     const LineExtras& extras) {
  std::string line = csv_text(source_name) + "," + std::to_string(frame) + "," +
                     to_thousandths(extras.seconds) + "," + csv_text(extras.picture) + "," +
                     (report.camera == Camera::kFront ? "front" : "back") + "," +
                     std::to_string(report.process) + "," + (report.gated ? "1" : "0") + "," +
                     std::to_string(report.person_boxes.size());
  if (extras.times)
    line += "," + to_thousandths(extras.times->network) + "," + to_thousandths(extras.times->process) + "," +
            to_thousandths(extras.times->analysis);
  for (const RecordField& field : record_fields())
    line += "," + std::to_string(value_of(report.record, field));
  return line + "\r\n";
}

}  // namespace tool
