/// From a decoded photograph to the NV21 frame that a camera would deliver.
#pragma once

#include <opencv2/core.hpp>
#include <optional>
#include <string>

#include "service/frame_input.h"

namespace tool {

/// A photograph, resized when `shape` names a size. Throws UsageError.
Frame photograph_frame(const std::string& path, const FrameShape& shape);

/// The frame of a decoded picture, cropped to even sides (NV21 has one chroma pair for each 2 x 2 block).
/// Throws UsageError for one that is too large or small.
Frame frame_from_bgr(const std::string& name, const cv::Mat& bgr, std::optional<int> stride = std::nullopt);

}  // namespace tool
