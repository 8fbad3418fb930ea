/// From a file to the NV21 frame that a camera would deliver.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "pictures/picture_size.h"

namespace cv {
class Mat;
}

namespace tool {

/// One camera frame: `height` luma rows of `stride` bytes, then height / 2 rows of V,U pairs, same stride.
struct Frame {
  std::string input;  ///< the file as it was given
  int width = 0, height = 0, stride = 0;
  std::vector<uint8_t> nv21;

  const uint8_t* luma() const { return nv21.data(); }
  const uint8_t* chroma() const {
    return nv21.data() + static_cast<size_t>(height) * static_cast<size_t>(stride);
  }
};

/// The size of a camera frame, "1920x1080": both sides even. Throws UsageError.
FrameSize parse_size(const std::string& text);

/// Throws UsageError when the file is missing, no picture, or a raw frame whose size does not fit. Does not
/// decode: cheap enough to ask for all inputs before the first one is analysed.
void check_input(const std::string& path, const FrameShape& flags);

/// Reads a raw frame (*.nv21) as it is, or a photograph, which is resized when `flags` name a size, cropped
/// to even sides (NV21 has one chroma pair for each 2 x 2 block) and converted. Throws UsageError.
Frame read_input(const std::string& path, const FrameShape& flags);

}  // namespace tool
