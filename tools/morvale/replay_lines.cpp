#include "replay_lines.h"

#include <cstdio>

#include "record_fields.h"
#include "report.h"

namespace tool {
namespace {

std::string ms_text(double ms) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", ms);
  return text;
}

/// RFC 4180: a text with commas, quotes or line ends stands in quotes, its quotes twice.
std::string csv_text(const std::string& text) {
  if (text.find_first_of(",\"\r\n") == std::string::npos) return text;
  std::string quoted = "\"";
  for (const char c : text) quoted += c == '"' ? std::string("\"\"") : std::string(1, c);
  return quoted + '"';
}

}  // namespace

std::string replay_json_line(const std::string& source_name, int frame, const FrameReport& report,
                             const LineExtras& extras) {
  nlohmann::ordered_json line = json_of(source_name, frame, report);
  line["gated"] = report.gated;
  if (!extras.picture.empty()) line["picture"] = extras.picture;
  if (extras.times) {
    const auto exact = [](double ms) { return std::stod(ms_text(ms)); };
    line["networkMs"] = extras.network_ms ? nlohmann::ordered_json(exact(*extras.network_ms)) : nullptr;
    line["processMs"] = exact(report.times.process_ms());
    line["analysisMs"] = exact(report.times.analysis_ms());
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
    line += "," + (extras.network_ms ? ms_text(*extras.network_ms) : "") + "," +
            ms_text(report.times.process_ms()) + "," + ms_text(report.times.analysis_ms());
  for (const RecordField& field : record_fields())
    line += "," + std::to_string(value_of(report.record, field));
  return line + "\r\n";
}

}  // namespace tool
