/// Cutting a frame of a shape that the library takes whole out of one that it does not.
#pragma once

#include <string>

#include "service/frame_input.h"

namespace tool {

struct CropShape {
  int across = 4, down = 3;
};

/// "4:3" or "16:9".
CropShape parse_crop(const std::string& text);

/// The largest part of the frame that has exactly this shape and even sides, its rows packed: from the middle
/// of the width, and nearer to the top than to the bottom, since heads are in the upper part. Throws
/// UsageError for a frame that is too small.
Frame cropped(const Frame& frame, CropShape shape);

}  // namespace tool
