/// From a decoded picture to the NV21 frame that a camera would deliver.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <string>

#include "service/frame_input.h"

namespace tool {

/// Cropped to even sides (NV21 has one chroma pair for each 2 x 2 block). Throws UsageError for a picture
/// that is too large or small.
Frame frame_from_bgr(const std::string& name, const cv::Mat& bgr, std::optional<int> stride = std::nullopt);

}  // namespace tool
