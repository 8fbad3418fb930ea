/// The label map, laid over the picture that it was made from.
#pragma once

#include <array>
#include <opencv2/core.hpp>

#include "service/camera_service.h"

namespace tool {

struct LabelStyle {
  const char* name;
  cv::Scalar color;  ///< B, G, R
};

/// Names and colours of the labels. Background has no colour. The others are told apart by colour-blind
/// people too.
extern const std::array<LabelStyle, morvale::kLabels> kLabelStyles;

/// Where the centre of a frame pixel lies in the label map, in cells; the inverse of cell_to_frame.
cv::Point2d frame_to_cell(const Geometry& geometry, cv::Point2d frame_pixel);
cv::Point2d cell_to_frame(const Geometry& geometry, cv::Point2d cell);

/// Draws the labels over `picture`, which shows the whole frame at any scale.
void lay_labels_over(cv::Mat& picture, const FrameReport& report);

}  // namespace tool
