/// The pictures inside a report.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "service/camera_service.h"

namespace tool {

/// A frame as the library reads it, rows of `width` bytes, chroma behind height * stride bytes, as a JPEG of
/// no more than `room` bytes if that can be. Empty for a frame without pixels.
std::vector<uint8_t> frame_jpeg(std::span<const uint8_t> nv21, const Geometry& geometry, size_t room);

/// The label map's five score planes below each other as a grey PNG, which a browser unpacks byte for byte.
/// Empty for an empty map.
std::vector<uint8_t> score_png(std::span<const uint8_t> label_map, const Geometry& geometry);

}  // namespace tool
