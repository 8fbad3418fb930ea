#include "report/report_page.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>

#include "analyze/label_style.h"
#include "analyze/person_colors.h"
#include "common/atomic_file.h"
#include "common/base64.h"
#include "common/command.h"
#include "kernels/processor.h"
#include "pictures/opencv_module.h"
#include "report/frame_events.h"
#include "report/report_template.h"
#include "report/thinned_files.h"
#include "service/face_boxes.h"
#include "service/record_fields.h"
#include "service/report_text.h"
#include "service/shape_notes.h"
#include "session/build_note.h"
#include "session/json.h"

namespace tool {
namespace {

using morvale::session::Json;
using Bytes = std::vector<uint8_t>;

constexpr std::string_view kMarker = "@@MORVALE_REPORT_DATA@@";
constexpr int kUsualFrames = 300;
constexpr size_t kPageRoom = 12'000'000;   ///< bytes of a page
constexpr size_t kLeastFiles = 2'000'000;  ///< of them for pictures and scores, however much the figures take

bool same_box(const FaceRect& a, const FaceRect& b) {
  return a.x == b.x && a.y == b.y && a.w == b.w && a.h == b.h;
}

Json json_of(const std::vector<FaceRect>& boxes) {
  Json list = Json::array();
  for (const FaceRect& box : boxes) list.push_back(Json::array({box.x, box.y, box.w, box.h}));
  return list;
}

/// Where the measured faces lie; null where that is where the first boxes do, as on nearly every frame.
Json faces_beyond_boxes(const FrameReport& report) {
  const std::vector<FaceRect> faces = face_boxes(report), &boxes = report.person_boxes;
  const bool same =
      faces.size() <= boxes.size() && std::equal(faces.begin(), faces.end(), boxes.begin(), same_box);
  return same ? Json(nullptr) : json_of(faces);
}

Json label_styles() {
  Json list = Json::array();
  for (size_t label = 0; label < kLabelStyles.size(); ++label) {
    const LabelStyle& style = kLabelStyles[label];
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", style.red, style.green, style.blue);
    list.push_back({{"name", style.name}, {"color", label == 0 ? Json(nullptr) : Json(text)}});
  }
  return list;
}

Json fields_of(Camera camera) {
  Json list = Json::array();
  for (const RecordField& field : record_fields())
    list.push_back({{"name", field.name},
                    {"offset", field.offset},
                    {"signed", field.is_signed},
                    {"meaning", field.meaning(camera)}});
  return list;
}

/// The winning label of every cell (a tie goes to the lower one) as runs: label << 5 | length - 1, at most 32
/// cells each.
std::string label_runs(std::span<const uint8_t> label_map) {
  constexpr int kLongestRun = 32;
  Bytes runs;
  int run_label = -1, length = 0;
  const auto flush = [&] {
    if (length > 0) runs.push_back(static_cast<uint8_t>(run_label << 5 | (length - 1)));
    length = 0;
  };
  for (size_t cell = 0; cell + morvale::kLabels <= label_map.size(); cell += morvale::kLabels) {
    const auto scores = label_map.subspan(cell, morvale::kLabels);
    const int label = static_cast<int>(std::max_element(scores.begin(), scores.end()) - scores.begin());
    if (label != run_label || length == kLongestRun) flush();
    run_label = label;
    ++length;
  }
  flush();
  return base64(runs);
}

Json json_of(const RecordComparison& comparison) {
  if (!comparison.first()) return {{"same", true}, {"frames", comparison.frames()}};
  const RecordDifference& first = *comparison.first();
  return {{"same", false},
          {"frames", comparison.frames()},
          {"index", comparison.first_index()},
          {"field", first.field},
          {"offset", first.offset ? Json(*first.offset) : Json(nullptr)},
          {"expected", first.expected},
          {"got", first.got},
          {"differing", comparison.differing()}};
}

/// JSON in a script element ends at nothing but the element's end: no "<" may stand in it.
std::string script_text(const Json& data) {
  const std::string json = data.dump();
  std::string text;
  text.reserve(json.size() + 1024);
  for (const char c : json) {
    if (c == '<')
      text += "\\u003c";
    else
      text += c;
  }
  return text;
}

/// Bytes for each picture of a run, so that all of them find room in a page.
size_t room_for_one_picture(int expected_frames) {
  constexpr size_t kRoom = 8'000'000, kLeast = 9'000, kMost = 90'000;
  return std::clamp(kRoom / static_cast<size_t>(std::max(expected_frames, 1)), kLeast, kMost);
}

size_t marker_place() {
  const size_t at = report_template().find(kMarker);
  if (at == std::string_view::npos)
    throw RunError("this program was built without the report page; build it with -DMORVALE_REPORT=ON.");
  return at;
}

/// A time to thousandths: no more digits than mean something.
Json json_of(std::optional<double> time) {
  return time ? Json(std::round(*time * 1000) / 1000) : Json(nullptr);
}

}  // namespace

struct ReportPage::Content {
  ReportHead head;
  size_t room_for_one;
  ThinnedFiles pictures{8'000'000}, scores{2'000'000}, baseline_pictures{8'000'000};
  Json other_pixels = Json::array();  ///< 1 where the baseline's frame is another than the one in view
  EventFinder events;
  std::vector<Geometry> geometries;
  bool named = false, timed = false;
  Json number = Json::array(), name = Json::array(), seconds = Json::array(), geometry = Json::array(),
       process = Json::array(), gated = Json::array(), network_ms = Json::array(), process_ms = Json::array(),
       analysis_ms = Json::array(), camera_faces = Json::array(), boxes = Json::array(),
       face_boxes = Json::array(), runs = Json::array(), log = Json::array();
  Json comparison, baseline;
  std::map<std::string, size_t> log_places;  ///< of each distinct line, its priority before its text
  std::vector<std::string> log_lines;        ///< by place
  Bytes records;

  explicit Content(ReportHead given)
      : head(std::move(given)),
        room_for_one(room_for_one_picture(head.expected_frames.value_or(kUsualFrames))) {}

  size_t place_of(const Geometry& wanted) {
    const auto found = std::find(geometries.begin(), geometries.end(), wanted);
    if (found == geometries.end()) return geometries.push_back(wanted), geometries.size() - 1;
    return static_cast<size_t>(found - geometries.begin());
  }

  Json frames() const {
    return {{"number", number},
            {"name", named ? name : Json(nullptr)},
            {"seconds", timed ? seconds : Json(nullptr)},
            {"geometry", geometry},
            {"process", process},
            {"gated", gated},
            {"network_ms", network_ms},
            {"process_ms", process_ms},
            {"analysis_ms", analysis_ms},
            {"camera_faces", camera_faces},
            {"boxes", boxes},
            {"face_boxes", face_boxes}};
  }

  /// A run logs the same a thousand times: each distinct line is kept once.
  void add_log(int index, const LogLine& line) {
    const auto [place, fresh] = log_places.emplace(line.priority + line.text, log_lines.size());
    if (fresh) log_lines.push_back(place->first);
    log.push_back(Json::array({index, place->second}));
  }

  /// As many pictures and scores as the page has room for beside everything else.
  void put_files(Json& data) {
    constexpr size_t kPlaces = 40;  ///< a frame's numbers of its files, quotes and padding around them
    const size_t taken =
        report_template().size() + script_text(data).size() + kPlaces * number.elements().size();
    const size_t room =
        std::max(kPageRoom > taken ? kPageRoom - taken : 0, kLeastFiles) / 4 * 3;  // as base64
    scores.fit(room / 4);
    size_t scored = 0;
    for (const Bytes& file : scores.files()) scored += file.size();
    const size_t left = room - std::min(scored, room);
    const size_t sides = baseline_pictures.files().empty() ? 1 : 2;
    baseline_pictures.fit(left / sides * (sides - 1));
    pictures.fit(left / sides);
    put_files(data["frames"], "picture", data, "pictures", pictures);
    put_files(data["frames"], "scores", data, "scores", scores);
    if (sides == 2) put_files(data["baseline"], "picture", data["baseline"], "pictures", baseline_pictures);
  }

  /// The files under `list` of `all`, and for each frame which of them is its own.
  static void put_files(Json& frames, const char* place_name, Json& all, const char* list,
                        const ThinnedFiles& files) {
    Json places = Json::array(), texts = Json::array();
    for (const auto& place : files.places()) places.push_back(place ? Json(*place) : Json(nullptr));
    for (const Bytes& file : files.files()) texts.push_back(base64(file));
    frames[place_name] = places;
    all[list] = texts;
  }

  Json data() {
    Json shapes = Json::array(), marks = Json::array();
    for (const Geometry& one : geometries) {
      Json shape = json_of(one);
      shape["notes"] = Json::list(shape_notes(one));
      shapes.push_back(std::move(shape));
    }
    for (const FrameEvent& event : events.events())
      marks.push_back({{"index", event.index}, {"kind", event.kind}, {"text", event.text}});
    Json data = {
        {"format", "morvale-report"},
        {"version", 2},
        {"title", head.title},
        {"program", "morvale " MORVALE_VERSION "; library " + morvale::session::library_identity()},
        {"command", head.command},
        {"source", Json{{"kind", head.source_kind}, {"name", head.source_name}, {"made_by", head.made_by}}},
        {"camera", head.camera == Camera::kFront ? "front" : "back"},
        {"engine", head.engine},
        {"kernels", morvale::choose_kernels().name},
        {"sluggish_ms", kSluggishMs},
        {"labels", label_styles()},
        {"person_colors", Json::list(kPersonColors)},
        {"fields", fields_of(head.camera)},
        {"geometries", shapes},
        {"frames", frames()},
        {"records", base64(records)},
        {"label_runs", runs},
        {"log", log},
        {"log_lines", Json::list(log_lines)},
        {"events", marks},
        {"comparison", comparison},
        {"baseline", baseline}};
    put_files(data);
    return data;
  }
};

ReportPage::ReportPage(ReportHead head) : content_(std::make_unique<Content>(std::move(head))) {
  marker_place();  // better told before the first frame than behind the last
}

ReportPage::~ReportPage() = default;

void ReportPage::add(const ReportFrame& frame) {
  Content& page = *content_;
  const FrameReport& report = frame.report;
  const int index = static_cast<int>(page.records.size() / sizeof report.record);
  page.number.push_back(frame.number);
  page.name.push_back(frame.name);
  page.named |= !frame.name.empty();
  page.seconds.push_back(json_of(frame.seconds));
  page.timed |= frame.seconds.has_value();
  page.geometry.push_back(page.place_of(report.geometry));
  page.process.push_back(report.process);
  page.gated.push_back(report.gated ? 1 : 0);
  page.network_ms.push_back(json_of(frame.times.network));
  page.process_ms.push_back(json_of(frame.times.process));
  page.analysis_ms.push_back(json_of(frame.times.analysis));
  page.camera_faces.push_back(json_of(report.camera_faces));
  page.boxes.push_back(frame.boxes_known ? json_of(report.person_boxes) : Json(nullptr));
  page.face_boxes.push_back(frame.boxes_known ? faces_beyond_boxes(report) : Json(nullptr));
  page.runs.push_back(label_runs(report.label_map));
  for (const LogLine& line : report.log) page.add_log(index, line);
  const auto* bytes = reinterpret_cast<const uint8_t*>(&report.record);
  page.records.insert(page.records.end(), bytes, bytes + sizeof report.record);
  page.events.add(report, frame.times.network);
  page.pictures.add(
      page.pictures.wanted() ? opencv().frame_jpeg(frame.nv21, report.geometry, page.room_for_one) : Bytes());
  const bool other = !frame.baseline_nv21.empty() && !std::ranges::equal(frame.nv21, frame.baseline_nv21);
  page.other_pixels.push_back(other ? 1 : 0);
  page.baseline_pictures.add(
      other && page.baseline_pictures.wanted()
          ? opencv().frame_jpeg(frame.baseline_nv21, report.geometry, page.room_for_one)
          : Bytes());
  page.scores.add(page.scores.wanted() ? opencv().score_png(report.label_map, report.geometry) : Bytes());
}

void ReportPage::compare_with(const RecordComparison& comparison) {
  content_->comparison = json_of(comparison);
}

void ReportPage::compare_with(const ReportBaseline& baseline) {
  Json runs = Json::array();
  for (const Bytes& map : baseline.label_maps) runs.push_back(label_runs(map));
  Json faces = Json::array();
  for (const auto& of_frame : baseline.camera_faces) faces.push_back(json_of(of_frame));
  const auto* bytes = reinterpret_cast<const uint8_t*>(baseline.records.data());
  content_->baseline = {{"name", baseline.name},
                        {"records", base64({bytes, baseline.records.size() * sizeof(PersonWholeMeta)})},
                        {"label_runs", runs},
                        {"camera_faces", faces},
                        {"other_pixels", content_->other_pixels},
                        {"boxes", nullptr}};
}

void ReportPage::make_folder(const std::filesystem::path& folder) {
  std::error_code error;
  std::filesystem::create_directories(folder, error);
  if (!std::filesystem::is_directory(folder, error))
    throw UsageError("--report: " + folder.string() +
                     " is not a folder and cannot be made one; name another.");
}

void ReportPage::write(const std::filesystem::path& folder) const {
  make_folder(folder);
  const std::string_view page = report_template();
  const size_t at = marker_place();
  std::string html(page.substr(0, at));
  html += script_text(content_->data());
  html += page.substr(at + kMarker.size());
  write_file(folder / "report.html", {html.begin(), html.end()});
}

}  // namespace tool
