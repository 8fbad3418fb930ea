#pragma once

#include "analyze/canvas.h"
#include "service/camera_service.h"

namespace tool {

/// Writes the record's figures into a column of this width; returns where it ends below.
double draw_panel(Canvas& canvas, cv::Point2d top_left, double width, const FrameReport& report);

}  // namespace tool
