#include "service/report_text.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "service/record_fields.h"
#include "service/shape_notes.h"
#include "session/json.h"
#include "session/printable.h"

namespace tool {
namespace {

using morvale::session::Json;
using morvale::session::printable;

Json json_of(const FaceRect& box) { return {{"x", box.x}, {"y", box.y}, {"w", box.w}, {"h", box.h}}; }

Json json_of(const std::vector<FaceRect>& boxes) {
  Json list = Json::array();
  for (const FaceRect& box : boxes) list.push_back(json_of(box));
  return list;
}

Json json_of(const PersonMeta& meta) {
  return {{"brightCount", Json::list(meta.brightCount)},
          {"faceYavg", meta.faceYavg},
          {"hsvMin", Json::list(meta.hsvMin)},
          {"hsv", Json::list(meta.hsv)},
          {"skinRatio", meta.skinRatio},
          {"box", Json::list(meta.box)}};
}

Json json_of(const PersonWholeMeta& record) {
  Json metas = Json::array();
  for (const PersonMeta& meta : record.meta) metas.push_back(json_of(meta));
  return {{"ver", record.ver}, {"humanRatio", record.humanRatio}, {"meta", metas}};
}

std::string box_text(const FaceRect& box) {
  return std::to_string(box.x) + "," + std::to_string(box.y) + " " + std::to_string(box.w) + "x" +
         std::to_string(box.h);
}

std::string hsv_text(const PersonMeta& meta) {
  char text[64];
  std::snprintf(text, sizeof text, "%d/%d/%d", meta.hsv[0], meta.hsv[1], meta.hsv[2]);
  return text;
}

}  // namespace

std::array<std::string, kGridRows> occupancy_grid(const PersonWholeMeta& record) {
  // 285 cells, most significant bit first, through the box words of elements 1 to 4. The resource hint lies
  // over the twelfth word, past the last cell.
  std::array<std::string, kGridRows> grid;
  for (int cell = 0; cell < kGridColumns * kGridRows; ++cell) {
    const int word = cell / 32;
    const auto bits = static_cast<uint32_t>(record.meta[1 + word / 4].box[word % 4]);
    grid[static_cast<size_t>(cell / kGridColumns)] += (bits >> (31 - cell % 32) & 1) != 0 ? '1' : '0';
  }
  return grid;
}

FaceRect person_box(const PersonWholeMeta& record) {
  const auto& words = record.meta[0].box;
  return {words[0], words[2], words[1], words[3]};
}

int32_t resource_hint(const PersonWholeMeta& record) { return record.meta[3].box[3]; }

int measured_faces(const FrameReport& report) {
  return report.camera == Camera::kFront ? std::clamp(report.record.ver, 0, kMeasuredBlocks) : 0;
}

morvale::session::Json json_of(const Geometry& geometry) {
  return {{"width", geometry.width},
          {"height", geometry.height},
          {"stride", geometry.stride},
          {"padSize", geometry.pad_size},
          {"netSize", geometry.net_size},
          {"segFactor", geometry.seg_factor},
          {"scaleRatio", geometry.scale_ratio},
          {"shrunkWidth", geometry.shrunk_width},
          {"shrunkHeight", geometry.shrunk_height}};
}

morvale::session::Json json_of(const std::string& name, int frame_index, const FrameReport& report) {
  const bool front = report.camera == Camera::kFront;
  Json line = {{"input", name},
               {"frame", frame_index},
               {"camera", front ? "front" : "back"},
               {"process", report.process},
               {"status", report.status},
               {"frameCount", report.frame_count},
               {"geometry", json_of(report.geometry)},
               {"cameraFaces", json_of(report.camera_faces)},
               {"personCount", report.person_boxes.size()},
               {"personBoxes", json_of(report.person_boxes)},
               {"record", json_of(report.record)}};
  if (front) {
    line["measuredFaces"] = measured_faces(report);
  } else {
    line["personBox"] = json_of(person_box(report.record));
    line["grid"] = Json::list(occupancy_grid(report.record));
    line["qermHint"] = resource_hint(report.record);
  }
  const std::vector<std::string> notes = shape_notes(report.geometry);
  if (!notes.empty()) line["notes"] = Json::list(notes);
  return line;
}

std::string text_line(const morvale::session::Json& json) {
  // A file name need not be UTF-8; JSON must be.
  return json.dump() + "\n";
}

std::string json_line(const std::string& name, int frame_index, const FrameReport& report) {
  return text_line(json_of(name, frame_index, report));
}

Table::Table(const std::vector<std::string>& input_names) {
  for (const std::string& name : input_names) name_width_ = std::max(name_width_, printable(name).size());
  char text[256];
  std::snprintf(text, sizeof text, " %5s %-6s %11s %4s %6s %6s  %-22s  %4s  %-11s  %s\n", "frame", "camera",
                "size", "ver", "human", "found", "first box x,y WxH", "luma", "H/S/V", "face/map");
  heading_ = "input" + std::string(name_width_ - 5, ' ') + text;
}

std::string Table::lines(const std::string& input_name, int frame_index, const FrameReport& report) {
  const std::string name = printable(input_name);
  const Geometry& geometry = report.geometry;
  const std::string size = std::to_string(geometry.width) + "x" + std::to_string(geometry.height);
  char text[256];
  std::snprintf(text, sizeof text, " %5d %-6s %11s %4d %5d%% %6zu  %-22s", frame_index,
                report.camera == Camera::kFront ? "front" : "back", size.c_str(), report.record.ver,
                report.record.humanRatio, report.person_boxes.size(),
                report.person_boxes.empty() ? "-" : box_text(report.person_boxes[0]).c_str());
  const std::string row = name + std::string(name_width_ - name.size(), ' ') + text;
  std::string lines = std::exchange(heading_, {}) + row;
  if (report.process != 0) return lines + "  failed\n";
  if (measured_faces(report) == 0) lines += "     -\n";
  for (int face = 0; face < measured_faces(report); ++face) {
    const PersonMeta& meta = report.record.meta[face];
    std::snprintf(text, sizeof text, "  %4d  %-11s  %d/1000\n", meta.faceYavg, hsv_text(meta).c_str(),
                  meta.skinRatio);
    lines += (face == 0 ? "" : std::string(row.size(), ' ')) + text;
  }
  if (std::exchange(noted_, name) != name)
    for (const std::string& note : shape_notes(geometry)) lines += "  note: " + note + "\n";
  return lines;
}

}  // namespace tool
