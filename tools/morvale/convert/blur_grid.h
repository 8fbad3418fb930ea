#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "pictures/picture_size.h"

namespace tool {

/// The grid that marks the cells of 8 x 8 pixels to blur, as the kernels take it: 600 bytes a row. From a
/// file, either so (its length is 600 times the rows that the picture has cells) or a picture of one pixel a
/// cell, where anything but black marks; with no file all cells are marked. Throws UsageError.
std::vector<uint8_t> blur_grid(const std::string& file, FrameSize picture);

}  // namespace tool
