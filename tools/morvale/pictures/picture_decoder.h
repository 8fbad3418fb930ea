/// Photographs from files: JPEG, PNG, BMP and what else OpenCV reads.
#pragma once

#include <opencv2/core.hpp>
#include <string>

#include "pictures/picture_size.h"

namespace tool {

/// Decodes a picture to BGR. A damaged or cut-off file, or one that is no picture, throws UsageError.
cv::Mat decode_photograph(const std::string& path);

/// The same, then brought to this size (each pixel the mean of the area that it covers).
cv::Mat decode_photograph(const std::string& path, FrameSize size);

}  // namespace tool
