/// Photographs from files: JPEG, PNG, BMP and what else OpenCV reads.
#pragma once

#include <cstdint>
#include <opencv2/core.hpp>
#include <optional>
#include <string>
#include <vector>

#include "pictures/picture_size.h"

namespace tool {

/// Throws UsageError when there is no readable file of this name.
void check_readable(const std::string& path);

/// The length of a file in bytes, absent when it has none.
std::optional<uint64_t> file_length(const std::string& path);

/// The first `count` bytes of a file. Throws UsageError.
std::vector<uint8_t> read_bytes(const std::string& path, uint64_t count);

/// Decodes a picture to BGR. A damaged or cut-off file, or one that is no picture, throws UsageError.
cv::Mat decode_photograph(const std::string& path);

/// The same, then brought to this size (each pixel the mean of the area that it covers).
cv::Mat decode_photograph(const std::string& path, FrameSize size);

}  // namespace tool
