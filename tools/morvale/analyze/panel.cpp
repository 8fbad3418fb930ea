#include "analyze/panel.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <string>

#include "analyze/person_colors.h"
#include "service/face_boxes.h"
#include "service/report_text.h"

namespace tool {
namespace {

const Color kRule(218, 213, 210), kBar(178, 114, 0), kGridEmpty(236, 232, 230);

std::string number(double value) {
  char text[32];
  std::snprintf(text, sizeof text, "%.5g", value);
  return text;
}

std::string size_text(int width, int height) {
  return std::to_string(width) + " x " + std::to_string(height);
}

std::string box_text(const FaceRect& box) {
  return size_text(box.w, box.h) + " at " + std::to_string(box.x) + ", " + std::to_string(box.y);
}

/// The colour of a record's hue (degrees), saturation and value (0..255).
Color color_of_record(int hue, int saturation, int value) {
  const auto share = [](int byte) { return static_cast<float>(std::clamp(byte, 0, 255)) / 255.0f; };
  const auto degrees = static_cast<float>(((hue % 360) + 360) % 360);
  const cv::Mat hsv(1, 1, CV_32FC3, cv::Scalar(degrees, share(saturation), share(value)));
  cv::Mat bgr;
  cv::cvtColor(hsv, bgr, cv::COLOR_HSV2BGR);
  const auto pixel = bgr.at<cv::Vec3f>(0, 0) * 255.0f;
  return {pixel[0], pixel[1], pixel[2]};
}

/// A column of headings and rows that grows downwards.
class Panel {
 public:
  Panel(Canvas& canvas, cv::Point2d top_left, double width)
      : canvas_(canvas), left_(top_left.x), width_(width), y_(top_left.y) {}

  void heading(const std::string& text) {
    if (!first_) y_ += 20;
    first_ = false;
    canvas_.text(text, {left_, y_ + 12}, {10.5, kInk, true});
    rule();
  }

  /// A person's, with the colour of the box and the place of the figures in the record.
  void heading(int person, int block) {
    y_ += 20;
    canvas_.fill({left_, y_ + 1, 12, 12}, color_of(kPersonColors[size_t(person) % kPersonColors.size()]));
    canvas_.text("Person " + std::to_string(person + 1), {left_ + 20, y_ + 12}, {10.5, kInk, true});
    canvas_.text_right("meta[" + std::to_string(block) + "]", {left_ + width_, y_ + 12}, {9, kQuiet});
    rule();
  }

  void rule() {
    canvas_.fill({left_, y_ + 21, width_, 1}, kRule);
    y_ += 28;
  }

  void row(const std::string& key, const std::string& value) {
    canvas_.text(key, {left_, y_ + 15}, {9, kQuiet});
    canvas_.text_right(value, {left_ + width_, y_ + 15}, {9, kInk});
    y_ += 23;
  }

  void bar(int per_cent) {
    canvas_.fill({left_, y_ + 4, width_, 7}, kGridEmpty);
    canvas_.fill({left_, y_ + 4, width_ * std::clamp(per_cent, 0, 100) / 100.0, 7}, kBar);
    y_ += 19;
  }

  /// Three patches: the low band, the mean and the high band of a face's colour.
  void swatches(const PersonMeta& face) {
    const int sign[] = {-1, 0, 1};
    const char* names[] = {"low band", "mean", "high band"};
    const double gap = 8, patch = (width_ - 2 * gap) / 3;
    for (int i = 0; i < 3; ++i) {
      const auto channel = [&](int c) {
        return face.hsv[c] + (sign[i] < 0 ? -face.hsvMin[c] : sign[i] > 0 ? face.box[c] : 0);
      };
      const double x = left_ + i * (patch + gap);
      canvas_.fill({x, y_ + 4, patch, 34}, color_of_record(channel(0), channel(1), channel(2)));
      const TextStyle style{8, kQuiet};
      canvas_.text(names[i], {x + (patch - Canvas::text_width(names[i], style)) / 2, y_ + 55}, style);
    }
    y_ += 64;
  }

  void grid(const PersonWholeMeta& record) {
    const double cell = width_ / kGridColumns;
    const auto rows = occupancy_grid(record);
    for (int row = 0; row < kGridRows; ++row)
      for (int column = 0; column < kGridColumns; ++column) {
        const bool occupied = rows[size_t(row)][size_t(column)] == '1';
        canvas_.fill({left_ + column * cell, y_ + 5 + row * cell, cell - 1.5, cell - 1.5},
                     occupied ? kBar : kGridEmpty);
      }
    y_ += kGridRows * cell + 8;
  }

  double bottom() const { return y_; }

 private:
  Canvas& canvas_;
  double left_, width_, y_;
  bool first_ = true;
};

void draw_face(Panel& panel, const PersonMeta& face) {
  const char* channels[] = {"Hue, degrees", "Saturation, 0 to 255", "Value, 0 to 255"};
  panel.swatches(face);
  for (int c = 0; c < 3; ++c)
    panel.row(channels[c], std::to_string(face.hsv[c]) + "  (-" + std::to_string(face.hsvMin[c]) + " +" +
                               std::to_string(face.box[c]) + ")");
  panel.row("Mean luma", std::to_string(face.faceYavg));
  panel.row("Pixels above 200, above 230",
            std::to_string(face.brightCount[0]) + ", " + std::to_string(face.brightCount[1]));
  panel.row("Share of the map, per thousand", std::to_string(face.skinRatio));
}

/// From left to right, as the boxes are numbered; the record has them by size.
void draw_faces(Panel& panel, const FrameReport& report) {
  const std::vector<int> persons = left_to_right(face_boxes(report));
  for (int person = 0; person < static_cast<int>(persons.size()); ++person) {
    const auto block = std::find(persons.begin(), persons.end(), person) - persons.begin();
    panel.heading(person, static_cast<int>(block));
    draw_face(panel, report.record.meta[block]);
  }
}

void draw_back_figures(Panel& panel, const PersonWholeMeta& record) {
  panel.row("Person box", box_text(person_box(record)));
  panel.row("Resource hint", std::to_string(resource_hint(record)));
  panel.heading("Occupancy grid, 19 x 15");
  panel.grid(record);
}

void draw_frame_figures(Panel& panel, const FrameReport& report) {
  const Geometry& geometry = report.geometry;
  panel.heading("Geometry");
  panel.row("Frame, stride",
            size_text(geometry.width, geometry.height) + ", " + std::to_string(geometry.stride));
  panel.row("Network input", size_text(geometry.pad_size, geometry.pad_size));
  panel.row("Picture in it", size_text(geometry.shrunk_width, geometry.shrunk_height));
  panel.row("Label map", size_text(geometry.net_size, geometry.seg_factor));
  panel.row("Frame pixels per input pixel", number(geometry.scale_ratio));
}

}  // namespace

double draw_panel(Canvas& canvas, cv::Point2d top_left, double width, const FrameReport& report) {
  const bool front = report.camera == Camera::kFront;
  Panel panel(canvas, top_left, width);
  panel.heading("Result");
  panel.row("Share of person (humanRatio)", std::to_string(report.record.humanRatio) + " %");
  panel.bar(report.record.humanRatio);
  panel.row("ver", std::to_string(report.record.ver));
  panel.row(front ? "Faces in the label map" : "Persons", std::to_string(report.person_boxes.size()));
  panel.row("Faces of the camera", std::to_string(report.camera_faces.size()));
  if (!front) draw_back_figures(panel, report.record);
  draw_faces(panel, report);
  draw_frame_figures(panel, report);
  return panel.bottom();
}

}  // namespace tool
