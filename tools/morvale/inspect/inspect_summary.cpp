#include "inspect/inspect_summary.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "inspect/inspect_words.h"
#include "service/report_text.h"
#include "session/printable.h"

namespace tool {
namespace {

using morvale::session::FrameLine;
using morvale::session::Json;
using morvale::session::SessionInfo;

std::string size_text(const MorvaleData_t& record) {
  const std::string size = std::to_string(record.width) + "x" + std::to_string(record.height);
  if (record.stride == 0 || record.stride == record.width) return size;
  return size + " with rows of " + std::to_string(record.stride) + " bytes";
}

std::string name_of(Camera camera) { return camera == Camera::kFront ? "front" : "back"; }

std::string text_of(const ValueRange& range) {
  if (range.empty) return "-";
  const std::string least = std::to_string(range.least);
  return range.least == range.most ? least : least + " to " + std::to_string(range.most);
}

Json json_of(const ValueRange& range) {
  return range.empty ? Json() : Json{{"least", range.least}, {"most", range.most}};
}

std::string line(const char* name, const std::string& value) {
  char text[32];
  std::snprintf(text, sizeof text, "  %-16s", name);
  return text + value + '\n';
}

std::string network_text(const std::vector<double>& ms) {
  if (ms.empty()) return "not timed";
  char text[128];
  std::snprintf(text, sizeof text, "p50 %.1f, p90 %.1f, longest %.1f ms, over %zu runs", percentile(ms, 50),
                percentile(ms, 90), ms.back(), ms.size());
  return text;
}

Json network_json(const std::vector<double>& ms) {
  if (ms.empty()) return nullptr;
  return {{"runs", ms.size()}, {"p50", percentile(ms, 50)}, {"p90", percentile(ms, 90)}, {"max", ms.back()}};
}

std::string open_text(int32_t open_result) {
  switch (open_result) {
    case -1:
      return "no model was loaded";
    case 0:
      return "opened";
    case 1:
      return "did not open";
    case 2:
      return "switched off as too slow";
    default:
      return "open returned " + std::to_string(open_result);
  }
}

std::string joined(const std::vector<std::string>& texts) {
  std::string all;
  for (const std::string& text : texts) all += (all.empty() ? "" : ", ") + text;
  return all;
}

std::string bundle_text(const RecordSource& source) {
  const SessionInfo& info = source.bundle->info();
  const BundleSummary summary = summary_of(source.lines);
  const std::string pad = std::to_string(info.pad_size), net = std::to_string(info.net_size);
  const auto of = [](int count) { return std::to_string(count); };
  std::string text;
  if (!source.bundle->warning().empty()) text += line("warning", source.bundle->warning());
  text += line("made by", info.made_by.empty() ? "(not told)" : morvale::session::printable(info.made_by));
  text +=
      line("model", pad + "x" + pad + " in, " + net + "x" + net + "x5 out; " + open_text(info.open_result));
  text += line("sizes", summary.sizes.empty() ? "-" : joined(summary.sizes));
  text += line("frames with", "pixels " + of(summary.with_pixels) + ", scores " + of(summary.with_scores) +
                                  ", label maps " + of(summary.with_labels));
  text += line("calls", of(summary.failed) + " failed, " + of(summary.gated) + " gated, " +
                            of(summary.without_network) + " without a run of the network");
  text += line("network", network_text(summary.network_ms));
  return text + line("camera's faces", text_of(summary.camera_faces));
}

Json bundle_json(const RecordSource& source) {
  const SessionInfo& info = source.bundle->info();
  const BundleSummary summary = summary_of(source.lines);
  return {{"warning", source.bundle->warning()},
          {"madeBy", info.made_by},
          {"padSize", info.pad_size},
          {"netSize", info.net_size},
          {"openResult", info.open_result},
          {"sizes", Json::list(summary.sizes)},
          {"withPixels", summary.with_pixels},
          {"withScores", summary.with_scores},
          {"withLabels", summary.with_labels},
          {"failed", summary.failed},
          {"gated", summary.gated},
          {"withoutNetwork", summary.without_network},
          {"networkMs", network_json(summary.network_ms)},
          {"cameraFaces", json_of(summary.camera_faces)}};
}

}  // namespace

void ValueRange::add(int64_t value) {
  least = empty ? value : std::min(least, value);
  most = empty ? value : std::max(most, value);
  empty = false;
}

bool is_gated(const FrameLine& line) {
  return line.process_result == 0 && line.input.record.gateLevel > morvale::kGateLimit;
}

double percentile(const std::vector<double>& values, int percent) {
  const size_t rank = (values.size() * static_cast<size_t>(percent) + 99) / 100;
  return values[std::max<size_t>(rank, 1) - 1];
}

RecordSummary summary_of(const RecordSource& source, Camera camera_of_bare_records) {
  RecordSummary summary;
  for (int index = 0; index < source.frame_count(); ++index) {
    const PersonWholeMeta& record = source.records[static_cast<size_t>(index)];
    const Camera camera = source.camera_at(index, camera_of_bare_records);
    ++summary.frames;
    summary.human_ratio.add(record.humanRatio);
    summary.ver.add(record.ver);
    if (camera == Camera::kFront)
      summary.faces.add(face_blocks(record, camera));
    else
      summary.person_box_frames += person_box(record).w > 0 && person_box(record).h > 0;
  }
  return summary;
}

BundleSummary summary_of(const std::vector<FrameLine>& lines) {
  BundleSummary summary;
  for (const FrameLine& line : lines) {
    const MorvaleData_t& record = line.input.record;
    const std::string size = size_text(record);
    if (std::find(summary.sizes.begin(), summary.sizes.end(), size) == summary.sizes.end())
      summary.sizes.push_back(size);
    summary.failed += line.process_result != 0;
    summary.gated += is_gated(line);
    summary.without_network += !line.execute_result.has_value();
    summary.with_pixels += !line.pixels.empty() || !line.thin.empty();
    summary.with_scores += !line.logits.empty();
    summary.with_labels += !line.labels.empty();
    summary.camera_faces.add(std::clamp(record.faceCount, 0, morvale::kMaxFaces));
    if (line.network_ms) summary.network_ms.push_back(*line.network_ms);
  }
  std::sort(summary.network_ms.begin(), summary.network_ms.end());
  return summary;
}

std::string summary_text(const RecordSource& source, Camera camera) {
  const RecordSummary summary = summary_of(source, camera);
  std::string text = morvale::session::printable(source.name) + "\n";
  text += line("kind", (source.bundle ? "session bundle, " : "bare records, read as ") + name_of(camera) +
                           " camera" + (source.bundle ? "" : "'s"));
  text += line("frames", std::to_string(summary.frames));
  if (source.bundle) text += bundle_text(source);
  text += line("humanRatio", text_of(summary.human_ratio)) + line("ver", text_of(summary.ver));
  if (camera == Camera::kFront) return text + line("measured faces", text_of(summary.faces));
  return text + line("person box", "in " + std::to_string(summary.person_box_frames) + " frames");
}

Json summary_json(const RecordSource& source, Camera camera) {
  const RecordSummary summary = summary_of(source, camera);
  Json json = {{"input", source.name},
               {"kind", source.bundle ? "bundle" : "records"},
               {"camera", name_of(camera)},
               {"frames", summary.frames},
               {"humanRatio", json_of(summary.human_ratio)},
               {"ver", json_of(summary.ver)}};
  if (camera == Camera::kFront)
    json["measuredFaces"] = json_of(summary.faces);
  else
    json["personBoxFrames"] = summary.person_box_frames;
  if (source.bundle) json["session"] = bundle_json(source);
  return json;
}

}  // namespace tool
