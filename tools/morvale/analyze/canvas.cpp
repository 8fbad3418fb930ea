#include "analyze/canvas.h"

#include <algorithm>
#include <cmath>
#include <opencv2/imgproc.hpp>
#include <sstream>

namespace tool {
namespace {

constexpr int kScale = 2;
constexpr double kFontCapHeight = 21;  ///< of the stroke font at scale 1, in pixels
constexpr int kSubpixelBits = 4;

const Color kHalo(30, 26, 24);

cv::Point subpixel(cv::Point2d point) {
  const double factor = kScale * (1 << kSubpixelBits);
  return {cvRound(point.x * factor), cvRound(point.y * factor)};
}

cv::Rect pixel_rect(cv::Rect2d box) {
  const cv::Point from(cvRound(box.x * kScale), cvRound(box.y * kScale));
  const cv::Point to(cvRound((box.x + box.width) * kScale), cvRound((box.y + box.height) * kScale));
  return {from, to};
}

int font(const TextStyle& style) { return style.bold ? cv::FONT_HERSHEY_DUPLEX : cv::FONT_HERSHEY_SIMPLEX; }
double font_scale(const TextStyle& style) { return style.cap_height * kScale / kFontCapHeight; }
int stroke(const TextStyle& style) { return std::max(1, cvRound(style.cap_height * kScale / 10)); }

std::string ascii(std::string text) {
  for (char& c : text)
    if (c < ' ' || c > '~') c = '?';
  return text;
}

std::string shortened(const std::string& text, const TextStyle& style, double room) {
  if (Canvas::text_width(text, style) <= room) return text;
  for (size_t kept = text.size(); kept > 1; --kept) {
    const std::string shorter = text.substr(0, (kept + 1) / 2) + "..." + text.substr(text.size() - kept / 2);
    if (Canvas::text_width(shorter, style) <= room) return shorter;
  }
  return "...";
}

}  // namespace

Color color_of(const std::string& hex) {
  const auto channel = [&](size_t at) { return std::stoi(hex.substr(at, 2), nullptr, 16); };
  return {double(channel(5)), double(channel(3)), double(channel(1))};
}

Canvas::Canvas(int width, Color background)
    : background_(background), surface_(0, width * kScale, CV_8UC3, background) {}

/// OpenCV draws nothing outside of a picture: before each drawing the surface becomes tall enough for it.
void Canvas::reach(double bottom) {
  const int missing = cvCeil(bottom * kScale) - surface_.rows;
  if (missing > 0) surface_.push_back(cv::Mat(missing, surface_.cols, surface_.type(), background_));
}

cv::Size Canvas::pixels(cv::Size2d points) {
  return {std::max(1, cvRound(points.width * kScale)), std::max(1, cvRound(points.height * kScale))};
}

void Canvas::image(const cv::Mat& picture, cv::Point2d top_left) {
  reach(top_left.y + double(picture.rows) / kScale);
  const cv::Rect place(cv::Point(cvRound(top_left.x * kScale), cvRound(top_left.y * kScale)), picture.size());
  const cv::Rect visible = place & cv::Rect({}, surface_.size());
  picture(visible - place.tl()).copyTo(surface_(visible));
}

void Canvas::fill(cv::Rect2d box, Color color) {
  reach(box.br().y);
  cv::rectangle(surface_, pixel_rect(box), color, cv::FILLED);
}

void Canvas::line(cv::Point2d from, cv::Point2d to, Color color, double thickness, double dash) {
  reach(std::max(from.y, to.y) + thickness);
  const int width = std::max(1, cvRound(thickness * kScale));
  const cv::Point2d way = to - from;
  const double length = std::hypot(way.x, way.y);
  const double piece = dash > 0 ? dash : std::max(length, 1.0);
  // Dashes and gaps of equal length.
  for (double at = 0; at < length; at += 2 * piece) {
    const cv::Point2d a = from + way * (at / length),
                      b = from + way * (std::min(at + piece, length) / length);
    cv::line(surface_, subpixel(a), subpixel(b), color, width, cv::LINE_AA, kSubpixelBits);
  }
}

void Canvas::outline(cv::Rect2d box, Color color, double thickness, double dash) {
  const cv::Point2d corners[] = {
      box.tl(), {box.x + box.width, box.y}, box.br(), {box.x, box.y + box.height}, box.tl()};
  for (int side = 0; side < 4; ++side) line(corners[side], corners[side + 1], kHalo, thickness + 1.5, 0);
  for (int side = 0; side < 4; ++side) line(corners[side], corners[side + 1], color, thickness, dash);
}

void Canvas::hairline(cv::Point2d from, cv::Point2d to, Color color, double opacity) {
  reach(std::max(from.y, to.y) + 1);
  // Straight lines only: the strip below the line is blended, not the whole surface.
  cv::Rect strip = pixel_rect({from, to});
  strip.width = std::max(strip.width, kScale);
  strip.height = std::max(strip.height, kScale);
  cv::Mat below = surface_(strip & cv::Rect({}, surface_.size()));
  if (below.empty()) return;
  cv::addWeighted(below, 1 - opacity, cv::Mat(below.size(), below.type(), color), opacity, 0, below);
}

void Canvas::hatch(cv::Rect2d box, Color color) {
  constexpr int kStep = 9 * kScale;
  reach(box.br().y);
  cv::Mat below = surface_(pixel_rect(box) & cv::Rect({}, surface_.size()));
  if (below.empty()) return;
  below *= 0.55;
  for (int x = -below.rows; x < below.cols; x += kStep)  // drawn in the box alone, which cuts them off
    cv::line(below, {x, below.rows}, {x + below.rows, 0}, color, kScale, cv::LINE_AA);
}

void Canvas::text(const std::string& text, cv::Point2d baseline, const TextStyle& style, double room) {
  reach(baseline.y + style.cap_height);  // room for what hangs below the baseline
  const cv::Point origin(cvRound(baseline.x * kScale), cvRound(baseline.y * kScale));
  cv::putText(surface_, shortened(ascii(text), style, room), origin, font(style), font_scale(style),
              style.color, stroke(style), cv::LINE_AA);
}

void Canvas::text_right(const std::string& text, cv::Point2d baseline_end, const TextStyle& style) {
  this->text(text, {baseline_end.x - text_width(text, style), baseline_end.y}, style);
}

double Canvas::paragraph(const std::string& text, cv::Point2d top_left, const TextStyle& style,
                         double width) {
  const double leading = 2.1 * style.cap_height;
  double baseline = top_left.y + leading;
  std::istringstream words(text);
  std::string line;
  for (std::string word; words >> word;) {
    const std::string longer = line.empty() ? word : line + ' ' + word;
    if (!line.empty() && text_width(longer, style) > width) {
      this->text(line, {top_left.x, baseline}, style);
      baseline += leading;
      line = word;
    } else {
      line = longer;
    }
  }
  this->text(line, {top_left.x, baseline}, style);
  return baseline + leading - style.cap_height;
}

double Canvas::text_width(const std::string& text, const TextStyle& style) {
  int below = 0;
  return double(cv::getTextSize(text, font(style), font_scale(style), stroke(style), &below).width) / kScale;
}

cv::Mat Canvas::finish(int height) {
  reach(height);
  cv::Mat finished;
  const cv::Mat used = surface_.rowRange(0, height * kScale);
  cv::resize(used, finished, {used.cols / kScale, used.rows / kScale}, 0, 0, cv::INTER_AREA);
  return finished;
}

}  // namespace tool
