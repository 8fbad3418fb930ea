#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace tool {

/// A frame as the library reads it, rows of `width` bytes with the chroma behind height * stride bytes, as a
/// JPEG of at most `room` bytes where the coarsest quality is coarse enough.
std::vector<uint8_t> report_jpeg(std::span<const uint8_t> nv21, int width, int height, int stride,
                                 size_t room);

}  // namespace tool
