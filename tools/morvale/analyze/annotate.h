/// The annotated picture of a frame.
#pragma once

#include <cstdint>
#include <vector>

#include "service/camera_service.h"
#include "service/frame_input.h"

namespace tool {

/// A PNG: the frame as the library sees it with the label map and the boxes over it, a legend below and the
/// record's figures beside it. The same frame and report give the same bytes.
std::vector<uint8_t> annotated_png(const Frame& frame, int frame_index, const FrameReport& report);

}  // namespace tool
