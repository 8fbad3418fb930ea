#include "diff/diff_page.h"

#include <algorithm>

#include "common/command.h"
#include "inspect/inspect_summary.h"
#include "report/report_page.h"
#include "service/record_difference.h"
#include "service/report_text.h"

namespace tool {
namespace {

using morvale::session::BundleReader;
using morvale::session::FrameLine;
using morvale::session::FrameOutput;
using morvale::session::SessionInfo;
using Bytes = std::vector<uint8_t>;

/// The last part of a path, unless both sides share it.
std::string short_name(const std::string& name, const std::string& other) {
  const auto last_part = [](const std::filesystem::path& path) {
    return (path.has_filename() ? path : path.parent_path()).filename();
  };
  return last_part(name) == last_part(other) ? name : last_part(name).string();
}

/// A frame as it was recorded, which is what is compared: nothing goes through the library anew.
class RecordedFrames {
 public:
  RecordedFrames(const RecordSource& a, const RecordSource& b, Camera camera_of_bare_records)
      : a_(a), b_(b), camera_(camera_of_bare_records) {}

  FrameReport report(int index) const {
    FrameReport report;
    const RecordSource* source = bundle_with(index);
    report.camera = source != nullptr ? source->camera_at(index, camera_) : camera_;
    report.record = b_.records[static_cast<size_t>(index)];
    // On the front camera a recording does not tell where the library saw people.
    const FaceRect box = person_box(report.record);
    if (report.camera == Camera::kBack && box.w > 0 && box.h > 0) report.person_boxes = {box};
    if (source == nullptr) return report;
    const FrameLine& line = source->lines[static_cast<size_t>(index)];
    const MorvaleData_t& record = line.input.record;
    report.process = line.process_result;
    report.gated = is_gated(line);
    report.camera_faces = faces_of(record);
    report.geometry = geometry_of(source->bundle->info(), record);
    return report;
  }

  /// A picture that fits report(index).geometry, or nothing.
  Bytes pixels(int index) const {
    const RecordSource* shape = bundle_with(index);
    for (const RecordSource* source : {&b_, &a_}) {
      if (!has(*source, index) || !source->bundle->has_pixels(index)) continue;
      const MorvaleData_t& own = record_of(*source, index);
      const MorvaleData_t& wanted = record_of(*shape, index);
      if (own.width == wanted.width && own.height == wanted.height && own.stride == wanted.stride)
        return source->bundle->input(index).nv21;
    }
    return {};
  }

  /// The baseline's picture, where it can be laid beside pixels(index).
  Bytes baseline_pixels(int index) const {
    if (!has(a_, index) || !has(b_, index) || !a_.bundle->has_pixels(index) || !b_.bundle->has_pixels(index))
      return {};
    const MorvaleData_t &before = record_of(a_, index), &now = record_of(b_, index);
    const bool fits = before.width == now.width && before.height == now.height && before.stride == now.stride;
    return fits ? a_.bundle->input(index).nv21 : Bytes();
  }

  std::vector<FaceRect> baseline_faces(int index) const {
    return has(a_, index) ? faces_of(record_of(a_, index)) : std::vector<FaceRect>();
  }

  static Bytes labels(const RecordSource& source, int index) {
    return has(source, index) ? source.bundle->output(index).labels : Bytes();
  }

  std::optional<double> network_ms(int index) const {
    return has(b_, index) ? b_.lines[static_cast<size_t>(index)].network_ms : std::nullopt;
  }

 private:
  static bool has(const RecordSource& source, int index) {
    return source.bundle && index < source.frame_count();
  }

  const RecordSource* bundle_with(int index) const {
    return has(b_, index) ? &b_ : has(a_, index) ? &a_ : nullptr;
  }

  static std::vector<FaceRect> faces_of(const MorvaleData_t& record) {
    return {record.faces, record.faces + std::clamp(record.faceCount, 0, morvale::kMaxFaces)};
  }

  static const MorvaleData_t& record_of(const RecordSource& source, int index) {
    return source.lines[static_cast<size_t>(index)].input.record;
  }

  static Geometry geometry_of(const SessionInfo& info, const MorvaleData_t& record) {
    Geometry geometry;
    geometry.width = record.width;
    geometry.height = record.height;
    geometry.stride = record.stride == 0 ? record.width : record.stride;
    geometry.pad_size = info.pad_size;
    geometry.net_size = info.net_size;
    geometry.scale_ratio = static_cast<float>(record.width) / static_cast<float>(info.pad_size);
    // Where a session is live the library keeps the side here; no session is.
    PADSIZE = info.pad_size;
    if (record.width > 0 && record.height > 0)
      calcSegFactor(record.height, record.width, geometry.shrunk_height, geometry.shrunk_width,
                    geometry.seg_factor);
    return geometry;
  }

  const RecordSource &a_, &b_;
  Camera camera_;
};

ReportHead head_of(const RecordSource& a, const RecordSource& b, Camera camera, const std::string& command) {
  ReportHead head;
  head.title = short_name(a.name, b.name) + " and " + short_name(b.name, a.name);
  head.command = command;
  head.source_kind = b.bundle ? "bundle" : "records";
  head.source_name = b.name;
  if (b.bundle) head.made_by = b.bundle->info().made_by;
  head.camera = b.camera().value_or(a.camera().value_or(camera));
  head.engine = "recorded";
  head.expected_frames = b.frame_count();
  return head;
}

}  // namespace

void write_diff_page(const RecordSource& a, const RecordSource& b, Camera camera_of_bare_records,
                     const std::string& command, const std::filesystem::path& folder) {
  if (b.frame_count() == 0) throw UsageError("--report: " + b.name + " has no frame to show.");
  const RecordedFrames frames(a, b, camera_of_bare_records);
  ReportPage page(head_of(a, b, camera_of_bare_records, command));
  ReportBaseline baseline{short_name(a.name, b.name), a.records, {}, {}};
  RecordComparison comparison;
  for (int index = 0; index < b.frame_count(); ++index) {
    FrameReport report = frames.report(index);
    Bytes before = frames.labels(a, index), now = frames.labels(b, index);
    // A map that one side did not keep would count as a difference; one of another shape fits no picture
    // here.
    if (index < a.frame_count() && before.size() != now.size()) before.clear(), now.clear();
    if (!now.empty())
      report.geometry.seg_factor =
          static_cast<int>(now.size()) / (report.geometry.net_size * morvale::kLabels);
    report.label_map = std::move(now);
    baseline.label_maps.push_back(std::move(before));
    StageTimes times;
    times.network = frames.network_ms(index);
    const bool boxes_known = report.camera == Camera::kBack;
    const Bytes picture = frames.pixels(index), other = frames.baseline_pixels(index);
    page.add({index, "", report, picture, times, boxes_known, {}, other});
    baseline.camera_faces.push_back(frames.baseline_faces(index));
    if (index >= a.frame_count()) continue;
    FrameOutput expected;
    expected.process_result = report.process;  // the records alone are compared
    expected.result = a.records[static_cast<size_t>(index)];
    comparison.add(index, expected, report);
  }
  // With frames on one side only, "identical" would not be the whole truth.
  if (comparison.first() || a.frame_count() == b.frame_count()) page.compare_with(comparison);
  page.compare_with(baseline);
  page.write(folder);
}

}  // namespace tool
