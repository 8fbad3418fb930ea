/// A drawing surface in points, of a given width and as tall as what is drawn on it. It draws at twice the
/// size and shrinks at the end, which is what makes OpenCV's stroke fonts and thin lines look clean.
#pragma once

#include <opencv2/core.hpp>
#include <string>

namespace tool {

using Color = cv::Scalar;  ///< B, G, R

const Color kInk(48, 40, 36), kQuiet(128, 118, 112);

/// Of "#rrggbb".
Color color_of(const std::string& hex);

struct TextStyle {
  double cap_height = 9.5;  ///< points
  Color color{60, 52, 48};
  bool bold = false;
};

class Canvas {
 public:
  Canvas(int width, Color background);

  /// Pixels of a picture that is to fill a rectangle of this size.
  static cv::Size pixels(cv::Size2d points);

  void image(const cv::Mat& picture, cv::Point2d top_left);
  void fill(cv::Rect2d box, Color color);
  /// A box outline on a dark halo, so that it shows on any picture. dash 0: a full line.
  void outline(cv::Rect2d box, Color color, double thickness, double dash = 0);
  /// A thin line; opacity below 1 lets the picture shine through.
  void hairline(cv::Point2d from, cv::Point2d to, Color color, double opacity);

  /// Darkens a box under diagonal lines.
  void hatch(cv::Rect2d box, Color color);

  /// Text on a baseline; it is shortened in the middle when it is wider than `room` points. ASCII; anything
  /// else shows as '?'.
  void text(const std::string& text, cv::Point2d baseline, const TextStyle& style, double room = 1e6);
  void text_right(const std::string& text, cv::Point2d baseline_end, const TextStyle& style);
  /// Text in as many lines as it needs below `top_left`; returns where they end.
  double paragraph(const std::string& text, cv::Point2d top_left, const TextStyle& style, double width);
  static double text_width(const std::string& text, const TextStyle& style);

  /// The finished picture, of this height.
  cv::Mat finish(int height);

 private:
  void reach(double bottom);
  void line(cv::Point2d from, cv::Point2d to, Color color, double thickness, double dash);

  Color background_;
  cv::Mat surface_;
};

}  // namespace tool
