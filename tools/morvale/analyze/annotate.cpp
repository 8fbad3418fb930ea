#include "analyze/annotate.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "analyze/canvas.h"
#include "analyze/label_overlay.h"
#include "analyze/panel.h"
#include "analyze/person_colors.h"
#include "common/command.h"
#include "service/face_boxes.h"
#include "service/report_text.h"
#include "service/shape_notes.h"

namespace tool {
namespace {

constexpr double kMargin = 28;
constexpr double kGap = 32;
constexpr double kHeaderHeight = 72;
constexpr double kPanelWidth = 400;
constexpr double kPictureRoomWidth = 760, kPictureRoomHeight = 780;
constexpr double kSmallestPictureColumn = 560;  ///< leaves room for the legend below a narrow picture

const Color kPaper(250, 251, 251);
const Color kCameraFace(255, 255, 255), kFoundFace(66, 228, 240), kPersonBox(0, 94, 213),
    kGridLine(255, 255, 255), kNotAnalysed(190, 190, 190);

/// What the library sees: rows of exactly `width` bytes, the chroma behind height * stride bytes.
cv::Mat seen_picture(const Frame& frame) {
  cv::Mat picture(frame.height, frame.width, CV_8UC3);
  NV21toRGB(frame.luma(), frame.chroma(), picture.data, frame.width, frame.height);
  cv::cvtColor(picture, picture, cv::COLOR_RGB2BGR);
  return picture;
}

/// Maps the frame onto its place on the canvas.
class Placement {
 public:
  Placement(const Frame& frame) {
    scale_ = std::min(kPictureRoomWidth / frame.width, kPictureRoomHeight / frame.height);
    size_ = {frame.width * scale_, frame.height * scale_};
    column_ = std::max(size_.width, kSmallestPictureColumn);
    origin_ = {kMargin + (column_ - size_.width) / 2, kHeaderHeight};
  }

  cv::Point2d origin() const { return origin_; }
  cv::Size2d size() const { return size_; }
  double column_width() const { return column_; }
  double bottom() const { return origin_.y + size_.height; }
  cv::Point2d at(cv::Point2d frame_pixel) const { return origin_ + frame_pixel * scale_; }

  /// The visible part of a frame rectangle.
  cv::Rect2d box(cv::Rect2d frame_box) const {
    return cv::Rect2d(at(frame_box.tl()), at(frame_box.br())) & cv::Rect2d(origin_, size_);
  }
  cv::Rect2d box(const FaceRect& face) const { return box(cv::Rect2d(face.x, face.y, face.w, face.h)); }

 private:
  double scale_, column_;
  cv::Size2d size_;
  cv::Point2d origin_;
};

void draw_header(Canvas& canvas, const Frame& frame, int frame_index, const FrameReport& report,
                 double width) {
  const std::string camera = report.camera == Camera::kFront ? "front camera" : "back camera";
  const std::string right = camera + ", frame " + std::to_string(frame_index) + ", " +
                            std::to_string(frame.width) + " x " + std::to_string(frame.height);
  const TextStyle title{12, kInk, true}, quiet{9.5, kQuiet};
  canvas.text_right(right, {width - kMargin, 46}, quiet);
  canvas.text(std::filesystem::path(frame.input).filename().string(), {kMargin, 46}, title,
              width - 2 * kMargin - kGap - Canvas::text_width(right, quiet));
}

void draw_picture(Canvas& canvas, const Placement& place, const Frame& frame, const FrameReport& report) {
  cv::Mat shown;
  const cv::Mat picture = seen_picture(frame);
  const cv::Size pixels = Canvas::pixels(place.size());
  cv::resize(picture, shown, pixels, 0, 0, pixels.width < picture.cols ? cv::INTER_AREA : cv::INTER_CUBIC);
  lay_labels_over(shown, report);
  canvas.image(shown, place.origin());
  const double analysed = analysed_height(report.geometry);
  if (analysed < frame.height)
    canvas.hatch(place.box(cv::Rect2d(0, analysed, frame.width, frame.height - analysed)), kNotAnalysed);
}

/// The lattice of the 19 x 15 grid with its occupied cells. It spans the whole label map, so on a portrait
/// frame part of it lies right of the picture.
void draw_grid(Canvas& canvas, const Placement& place, const FrameReport& report) {
  const Geometry& geometry = report.geometry;
  const auto corner = [&](int column, int row) {
    return cell_to_frame(geometry, {double(column) * geometry.net_size / kGridColumns,
                                    double(row) * geometry.seg_factor / kGridRows});
  };
  const auto cell = [&](int column, int row, int columns, int rows) {
    return place.box(cv::Rect2d(corner(column, row), corner(column + columns, row + rows)));
  };
  for (int column = 1; column < kGridColumns; ++column) {
    const cv::Rect2d strip = cell(column, 0, 1, kGridRows);
    if (strip.width > 0) canvas.hairline(strip.tl(), {strip.x, strip.y + strip.height}, kGridLine, 0.4);
  }
  for (int row = 1; row < kGridRows; ++row) {
    const cv::Rect2d strip = cell(0, row, kGridColumns, 1);
    if (strip.height > 0) canvas.hairline(strip.tl(), {strip.x + strip.width, strip.y}, kGridLine, 0.4);
  }
  const auto grid = occupancy_grid(report.record);
  for (int row = 0; row < kGridRows; ++row)
    for (int column = 0; column < kGridColumns; ++column) {
      const cv::Rect2d box = cell(column, row, 1, 1);
      if (grid[size_t(row)][size_t(column)] == '0' || box.empty()) continue;
      const cv::Rect2d ring(box.x + 3, box.y + 3, box.width - 6, box.height - 6);
      for (const double x : {ring.x, ring.br().x})
        canvas.hairline({x, ring.y}, {x, ring.br().y}, kGridLine, 0.95);
      for (const double y : {ring.y, ring.br().y})
        canvas.hairline({ring.x, y}, {ring.br().x, y}, kGridLine, 0.95);
    }
}

/// A measured face, numbered as in the panel.
void draw_person(Canvas& canvas, cv::Rect2d box, int person) {
  const Color color = color_of(kPersonColors[static_cast<size_t>(person) % kPersonColors.size()]);
  canvas.outline(box, color, 3);
  canvas.fill({box.x - 1.5, box.y - 1.5, 20, 21}, color);
  canvas.text(std::to_string(person + 1), {box.x + 4, box.y + 14}, {11, kPaper, true});
}

void draw_boxes(Canvas& canvas, const Placement& place, const FrameReport& report) {
  const bool front = report.camera == Camera::kFront;
  if (!front) draw_grid(canvas, place, report);
  for (const FaceRect& box : report.person_boxes)
    canvas.outline(place.box(box), front ? kFoundFace : kPersonBox, 2.5);
  for (const FaceRect& face : report.camera_faces) canvas.outline(place.box(face), kCameraFace, 2, 7);
  const std::vector<FaceRect> faces = face_boxes(report);
  const std::vector<int> persons = left_to_right(faces);
  for (size_t i = 0; i < faces.size(); ++i) draw_person(canvas, place.box(faces[i]), persons[i]);
}

/// Lays legend entries out from left to right, in as many rows as they need.
class Legend {
 public:
  Legend(Canvas& canvas, double top, double right) : canvas_(canvas), right_(right), baseline_(top) {}

  void swatch(const LabelStyle& label) {
    const cv::Point2d at = place(label.name);
    canvas_.fill({at.x, at.y - 13, kSymbol, 17}, color_of(label));
  }
  void box(const std::string& name, Color color, double dash = 0) {
    const cv::Point2d at = place(name);
    canvas_.fill({at.x, at.y - 13, kSymbol, 17}, kInk);
    canvas_.outline({at.x + 4, at.y - 9, kSymbol - 8, 9}, color, 1.5, dash);
  }
  void hatched(const std::string& name) {
    const cv::Point2d at = place(name);
    canvas_.hatch({at.x, at.y - 13, kSymbol, 17}, kNotAnalysed);
  }
  double bottom() const { return baseline_ + 6; }

 private:
  static constexpr double kSymbol = 26;

  cv::Point2d place(const std::string& name) {
    const double width = kSymbol + 7 + Canvas::text_width(name, style_);
    if (x_ > kMargin && x_ + width > right_) x_ = kMargin, baseline_ += 27;
    const cv::Point2d at(x_, baseline_);
    canvas_.text(name, {x_ + kSymbol + 7, baseline_}, style_);
    x_ += width + 13;
    return at;
  }

  Canvas& canvas_;
  double right_, x_ = kMargin, baseline_;
  TextStyle style_{9.2, kInk};
};

double draw_legend(Canvas& canvas, const Placement& place, const FrameReport& report) {
  Legend legend(canvas, place.bottom() + 32, kMargin + place.column_width());
  for (size_t label = 1; label < kLabelStyles.size(); ++label) legend.swatch(kLabelStyles[label]);
  const std::vector<FaceRect> faces = face_boxes(report);
  if (!report.camera_faces.empty()) legend.box("camera's face", kCameraFace, 3);
  if (report.camera == Camera::kFront) {
    if (report.person_boxes.size() > faces.size()) legend.box("face that is not measured", kFoundFace);
    for (size_t i = 0; i < faces.size(); ++i)
      legend.box("person " + std::to_string(i + 1), color_of(kPersonColors[i % kPersonColors.size()]));
  } else {
    legend.box("person box", kPersonBox);
    legend.box("occupied grid cell", kGridLine);
  }
  if (analysed_height(report.geometry) < report.geometry.height) legend.hatched("not analysed");
  return legend.bottom();
}

double draw_notes(Canvas& canvas, const Placement& place, double top, const FrameReport& report) {
  for (const std::string& note : shape_notes(report.geometry))
    top = canvas.paragraph(note, {kMargin, top + 12}, {9.2, kInk}, place.column_width());
  return top;
}

}  // namespace

std::vector<uint8_t> annotated_png(const Frame& frame, int frame_index, const FrameReport& report) {
  const Placement place(frame);
  const double panel_left = kMargin + place.column_width() + kGap;
  const int width = static_cast<int>(std::lround(panel_left + kPanelWidth + kMargin));
  Canvas canvas(width, kPaper);
  draw_header(canvas, frame, frame_index, report, width);
  draw_picture(canvas, place, frame, report);
  draw_boxes(canvas, place, report);
  const double left_bottom = draw_notes(canvas, place, draw_legend(canvas, place, report), report);
  const double panel_bottom = draw_panel(canvas, {panel_left, kHeaderHeight}, kPanelWidth, report);
  const int height = static_cast<int>(std::lround(std::max(left_bottom, panel_bottom) + kMargin));
  std::vector<uint8_t> png;
  if (!cv::imencode(".png", canvas.finish(height), png))
    throw RunError("the annotated picture cannot be encoded.");
  return png;
}

}  // namespace tool
