/// The label map, laid over the picture that it was made from.
#pragma once

#include <opencv2/core.hpp>

#include "analyze/label_style.h"
#include "service/camera_service.h"

namespace tool {

inline cv::Scalar color_of(const LabelStyle& style) {
  return {double(style.blue), double(style.green), double(style.red)};
}

/// Where the centre of a frame pixel lies in the label map, in cells; the inverse of cell_to_frame.
cv::Point2d frame_to_cell(const Geometry& geometry, cv::Point2d frame_pixel);
cv::Point2d cell_to_frame(const Geometry& geometry, cv::Point2d cell);

/// Draws the labels over `picture`, which shows the whole frame at any scale.
void lay_labels_over(cv::Mat& picture, const FrameReport& report);

}  // namespace tool
