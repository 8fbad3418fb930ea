#include "analyze/label_overlay.h"

#include <algorithm>
#include <opencv2/imgproc.hpp>
#include <vector>

namespace tool {
namespace {

constexpr int kCellPixels = 4;  ///< network-input pixels a label-map cell spans in each direction
constexpr double kOpacity = 0.42;

/// The cells below every pixel of a picture of this size, as remap wants them. The front camera's analysis
/// interpolates between cells and so does the drawing; the back camera's takes each cell as it is.
cv::Mat cells_below(const FrameReport& report, cv::Size size) {
  const Geometry& geometry = report.geometry;
  cv::Mat cells(size, CV_32FC2);
  cells.forEach<cv::Vec2f>([&](cv::Vec2f& cell, const int* at) {
    const cv::Point2d pixel((at[1] + 0.5) * geometry.width / size.width - 0.5,
                            (at[0] + 0.5) * geometry.height / size.height - 0.5);
    const cv::Point2d exact = frame_to_cell(geometry, pixel);
    cell = {static_cast<float>(exact.x), static_cast<float>(exact.y)};
    if (report.camera == Camera::kBack) cell = {std::floor(cell[0]), std::floor(cell[1])};
  });
  return cells;
}

/// The scores of one label for every pixel; 0 below the map's last row.
cv::Mat scores_of(const FrameReport& report, int label, const cv::Mat& cells) {
  const Geometry& geometry = report.geometry;
  cv::Mat map(geometry.seg_factor, geometry.net_size * morvale::kLabels, CV_8UC1,
              const_cast<uint8_t*>(report.label_map.data()));
  cv::Mat plane, scores;
  cv::extractChannel(map.reshape(morvale::kLabels), plane, label);
  cv::remap(plane, scores, cells, cv::noArray(), cv::INTER_LINEAR, cv::BORDER_REPLICATE);
  const int rows = static_cast<int>(std::ceil(cell_to_frame(geometry, {0.0, double(geometry.seg_factor)}).y /
                                              geometry.height * scores.rows));
  if (rows < scores.rows) scores.rowRange(std::max(rows, 0), scores.rows).setTo(0);
  return scores;
}

/// 255 where `label` beats every other label; a tie is no win.
cv::Mat won_by(int label, const std::array<cv::Mat, morvale::kLabels>& scores) {
  const auto own = static_cast<size_t>(label);
  cv::Mat won(scores[own].size(), CV_8UC1, cv::Scalar(255));
  for (size_t other = 0; other < scores.size(); ++other)
    if (other != own) won &= scores[own] > scores[other];
  return won;
}

}  // namespace

cv::Point2d frame_to_cell(const Geometry& geometry, cv::Point2d frame_pixel) {
  return {frame_pixel.x * geometry.shrunk_width / geometry.width / kCellPixels,
          frame_pixel.y * geometry.shrunk_height / geometry.height / kCellPixels};
}

cv::Point2d cell_to_frame(const Geometry& geometry, cv::Point2d cell) {
  return {cell.x * kCellPixels * geometry.width / std::max(geometry.shrunk_width, 1),
          cell.y * kCellPixels * geometry.height / std::max(geometry.shrunk_height, 1)};
}

void lay_labels_over(cv::Mat& picture, const FrameReport& report) {
  if (report.label_map.empty()) return;
  const cv::Mat cells = cells_below(report, picture.size());
  std::array<cv::Mat, morvale::kLabels> scores;
  for (int label = 0; label < morvale::kLabels; ++label)
    scores[static_cast<size_t>(label)] = scores_of(report, label, cells);
  for (int label = 1; label < morvale::kLabels; ++label) {
    const cv::Scalar color = color_of(kLabelStyles[static_cast<size_t>(label)]);
    const cv::Mat won = won_by(label, scores);
    cv::Mat tinted;
    cv::addWeighted(picture, 1 - kOpacity, cv::Mat(picture.size(), picture.type(), color), kOpacity, 0,
                    tinted);
    tinted.copyTo(picture, won);
    std::vector<std::vector<cv::Point>> outlines;
    cv::findContours(won, outlines, cv::RETR_LIST, cv::CHAIN_APPROX_NONE);
    cv::drawContours(picture, outlines, -1, color, 3, cv::LINE_AA);
  }
}

}  // namespace tool
