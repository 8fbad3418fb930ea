/// `morvale score`: replays made-up scenes and compares what the library finds with the truth.
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include "common/command.h"
#include "common/diverted_output.h"
#include "common/options.h"
#include "common/progress.h"
#include "scenes/truth_file.h"
#include "service/camera_service.h"
#include "service/report_text.h"
#include "session/bundle.h"
#include "session/json.h"
#include "session/printable.h"

namespace tool {
namespace {

using morvale::scene::PersonTruth;
using morvale::scene::SceneTruth;
using morvale::session::BundleReader;
using morvale::session::Json;

/// From this overlap on a face counts as found.
constexpr double kFoundOverlap = 0.5;

constexpr const char* kIntroduction =
    "Replays scenes that morvale scene made and compares what the library finds with the truth. Needs no "
    "network.\n";

constexpr const char* kExamples = R"(Columns, as mean and worst over all frames:
  face IoU   intersection over union of the found face box and the true one; 0 for a face without a box. The
             back camera gives one box only: it is held against the face that it fits best.
  found      faces whose box overlaps by half or more
  share      |humanRatio - truth| in points: on the front camera the share of people in the picture, on the
             back camera, which counts the body alone, that of people without face and hair
  grid       back camera: per cent of the 19 x 15 cells that agree
  hue        front camera: |mean hue of a measured face - truth| in degrees
  records    records that come out as they stand in the bundle

Exit status: 0 done, 1 a frame failed, 2 the command line or a bundle cannot be used.
)";

/// The mean and the worst of a figure.
class Figure {
 public:
  explicit Figure(bool more_is_better) : more_is_better_(more_is_better) {}
  void add(double value) {
    if (count_ == 0 || (value < worst_) == more_is_better_) worst_ = value;
    sum_ += value;
    ++count_;
  }
  bool empty() const { return count_ == 0; }
  double mean() const { return sum_ / count_; }
  double worst() const { return worst_; }

 private:
  bool more_is_better_;
  double sum_ = 0, worst_ = 0;
  int count_ = 0;
};

struct Score {
  std::string bundle;
  Camera camera = Camera::kFront;
  int frames = 0, faces = 0, found = 0, same_records = 0;
  Figure face_iou{true}, share{false}, grid{true}, hue{false};
};

double area(const FaceRect& r) { return static_cast<double>(r.w) * r.h; }

double overlap(const FaceRect& a, const FaceRect& b) {
  const int w = std::min(a.x + a.w, b.x + b.w) - std::max(a.x, b.x);
  const int h = std::min(a.y + a.h, b.y + b.h) - std::max(a.y, b.y);
  const double shared = w > 0 && h > 0 ? static_cast<double>(w) * h : 0;
  const double both = area(a) + area(b) - shared;
  return both > 0 ? shared / both : 0;
}

const PersonTruth& nearest(const SceneTruth& truth, const FaceRect& box) {
  const auto less = [&](const PersonTruth& a, const PersonTruth& b) {
    return overlap(a.face, box) < overlap(b.face, box);
  };
  return *std::max_element(truth.people.begin(), truth.people.end(), less);
}

void add_face(Score& score, double iou) {
  score.face_iou.add(iou);
  ++score.faces;
  score.found += iou >= kFoundOverlap;
}

void compare_faces(Score& score, const FrameReport& report, const SceneTruth& truth) {
  if (report.camera == Camera::kBack) {
    double iou = 0;
    for (const FaceRect& box : report.person_boxes) iou = overlap(nearest(truth, box).face, box);
    add_face(score, iou);
    return;
  }
  for (const PersonTruth& person : truth.people) {
    if (person.face.w == 0) continue;
    double iou = 0;
    for (const FaceRect& box : report.person_boxes) iou = std::max(iou, overlap(person.face, box));
    add_face(score, iou);
  }
}

/// Which rectangle a measured block belongs to, the record does not say. With a block for each box they are
/// in the boxes' order; without boxes, in that of the camera's faces. A box around two faces breaks the
/// order: such a frame says nothing about hues.
void compare_hues(Score& score, const FrameReport& report, const SceneTruth& truth) {
  const std::vector<FaceRect>& boxes =
      report.person_boxes.empty() ? report.camera_faces : report.person_boxes;
  const int measured = measured_faces(report);
  if (measured != static_cast<int>(std::min<size_t>(boxes.size(), 3))) return;
  for (int i = 0; i < measured; ++i) {
    const double off = report.record.meta[i].hsv[0] - nearest(truth, boxes[static_cast<size_t>(i)]).hsv[0];
    score.hue.add(std::abs(off - 360 * std::round(off / 360)));
  }
}

void compare_grid(Score& score, const FrameReport& report, const SceneTruth& truth) {
  const auto grid = occupancy_grid(report.record);
  int same = 0;
  for (size_t row = 0; row < kGridRows; ++row)
    for (size_t column = 0; column < kGridColumns; ++column)
      same += grid[row][column] == truth.grid[row][column];
  score.grid.add(100.0 * same / (kGridRows * kGridColumns));
}

void compare(Score& score, const FrameReport& report, const SceneTruth& truth) {
  const bool front = report.camera == Camera::kFront;
  score.share.add(std::abs(report.record.humanRatio - (front ? truth.person_share : truth.body_share)));
  if (truth.people.empty()) return;
  compare_faces(score, report, truth);
  front ? compare_hues(score, report, truth) : compare_grid(score, report, truth);
}

/// The runtime hands out the bundle's own scores.
void choose_bundle(const std::string& bundle) {
  setenv("VEXA_ENGINE", "recorded", 1);
  setenv("VEXA_BUNDLE", bundle.c_str(), 1);
  unsetenv("VEXA_BUNDLE_FRAME");
  setenv("MORVALE_LOG", "S", 0);
}

Score score_of(const std::string& path) {
  const BundleReader bundle(path);
  const std::vector<SceneTruth> truth = read_truth(path);
  if (static_cast<int>(truth.size()) != bundle.frame_count())
    throw UsageError(truth_path(path).string() + " tells of " + std::to_string(truth.size()) +
                     " frames, the bundle has " + std::to_string(bundle.frame_count()) +
                     "; make the scene anew.");
  Score score;
  score.bundle = path;
  score.camera = bundle.info().camera_type == morvale::kFrontCamera ? Camera::kFront : Camera::kBack;
  choose_bundle(path);
  CameraService service(score.camera);
  Progress progress(truth.size());
  for (int index = 0; index < bundle.frame_count(); ++index) {
    progress.next(path);
    const morvale::session::FrameInput input = bundle.input(index);
    const MorvaleData_t& record = input.record;
    const Frame frame{path, record.width, record.height, record.width, input.nv21};
    const FrameReport report = service.analyze(
        frame, {record.faces, record.faces + std::clamp(record.faceCount, 0, morvale::kMaxFaces)});
    if (report.process != 0)
      throw RunError(path + ": frame " + std::to_string(index) + " failed in the library.");
    const PersonWholeMeta recorded = bundle.output(index).result;
    score.same_records += std::memcmp(&recorded, &report.record, sizeof recorded) == 0;
    ++score.frames;
    compare(score, report, truth[static_cast<size_t>(index)]);
  }
  return score;
}

Json json_of(const Figure& figure) {
  if (figure.empty()) return nullptr;
  const auto short_number = [](double value) { return std::round(value * 10000) / 10000; };
  return {{"mean", short_number(figure.mean())}, {"worst", short_number(figure.worst())}};
}

std::string json_line(const Score& score) {
  const Json line = {{"bundle", score.bundle},
                     {"camera", score.camera == Camera::kFront ? "front" : "back"},
                     {"frames", score.frames},
                     {"sameRecords", score.same_records},
                     {"faces", score.faces},
                     {"facesFound", score.found},
                     {"faceIoU", json_of(score.face_iou)},
                     {"personShareError", json_of(score.share)},
                     {"gridAgreement", json_of(score.grid)},
                     {"hueError", json_of(score.hue)}};
  return line.dump() + "\n";
}

std::string cell(const Figure& figure, int decimals) {
  if (figure.empty()) return "-";
  char text[64];
  std::snprintf(text, sizeof text, "%.*f / %.*f", decimals, figure.mean(), decimals, figure.worst());
  return text;
}

std::string table_row(const char* bundle, size_t name_width, const char* const (&cells)[8]) {
  char text[256];
  std::snprintf(text, sizeof text, "  %-6s %6s  %13s  %9s  %13s  %13s  %13s  %9s\n", cells[0], cells[1],
                cells[2], cells[3], cells[4], cells[5], cells[6], cells[7]);
  const std::string name = bundle;
  return name + std::string(name_width - std::min(name_width, name.size()), ' ') + text;
}

std::string table_row(const Score& score, size_t name_width) {
  const auto of = [](int part, int whole) { return std::to_string(part) + "/" + std::to_string(whole); };
  const std::string frames = std::to_string(score.frames), found = of(score.found, score.faces),
                    same = of(score.same_records, score.frames), iou = cell(score.face_iou, 2),
                    share = cell(score.share, 1), grid = cell(score.grid, 1), hue = cell(score.hue, 1);
  return table_row(morvale::session::printable(score.bundle).c_str(), name_width,
                   {score.camera == Camera::kFront ? "front" : "back", frames.c_str(), iou.c_str(),
                    found.c_str(), share.c_str(), grid.c_str(), hue.c_str(), same.c_str()});
}

}  // namespace

int score_main(int argc, char** argv) {
  std::vector<std::string> bundles;
  bool json = false;
  const CommandLine line{"morvale score",
                         kIntroduction,
                         kExamples,
                         {{"BUNDLE", &bundles, "Folders that morvale scene made", "", Required()},
                          {"--json", &json, "One JSON object a bundle instead of the table"}}};
  if (!parse_options(line, argc, argv)) return kExitDone;

  DivertedOutput data(STDOUT_FILENO);
  size_t name_width = 6;
  for (const std::string& bundle : bundles) name_width = std::max(name_width, bundle.size());
  if (!json)
    data.write_past(table_row("bundle", name_width,
                              {"camera", "frames", "face IoU", "found", "share", "grid", "hue", "records"}));
  for (const std::string& bundle : bundles) {
    try {
      const Score score = score_of(bundle);
      data.write_past(json ? json_line(score) : table_row(score, name_width));
    } catch (const morvale::session::BundleError& error) {
      throw UsageError(std::string(error.what()) + ".");
    }
  }
  return kExitDone;
}

}  // namespace tool
