/// Where the faces lie that a front record measures.
#pragma once

#include <vector>

#include "service/camera_service.h"

namespace tool {

/// The rectangle by which each measured face is known, in the order of the record's blocks: the library's
/// box, or the camera's face where two or more share a box or no box was found. Empty where the library's
/// boxes are not known.
std::vector<FaceRect> face_boxes(const FrameReport& report);

/// The place of each block's face when the faces are counted from left to right.
std::vector<int> left_to_right(const std::vector<FaceRect>& boxes);

}  // namespace tool
