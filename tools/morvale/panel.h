#pragma once

#include "camera_service.h"
#include "canvas.h"

namespace tool {

/// Writes the record's figures into a column of this width; returns where it ends below.
double draw_panel(Canvas& canvas, cv::Point2d top_left, double width, const FrameReport& report);

}  // namespace tool
