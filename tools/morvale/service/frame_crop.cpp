#include "service/frame_crop.h"

#include <algorithm>

#include "common/command.h"

namespace tool {

CropShape parse_crop(const std::string& text) { return text == "16:9" ? CropShape{16, 9} : CropShape{4, 3}; }

Frame cropped(const Frame& frame, CropShape shape) {
  // Twice the shape: both sides are even.
  const int parts = std::min(frame.width / (2 * shape.across), frame.height / (2 * shape.down));
  Frame part;
  part.input = frame.input;
  part.width = part.stride = parts * 2 * shape.across;
  part.height = parts * 2 * shape.down;
  if (parts == 0)
    throw UsageError("--crop: " + frame.input + " is only " + text_of(FrameSize{frame.width, frame.height}) +
                     "; leave the flag out.");
  const auto even = [](int value) { return static_cast<size_t>(value & ~1); };
  const size_t left = even((frame.width - part.width) / 2), top = even((frame.height - part.height) / 3);
  const auto width = static_cast<size_t>(part.width), height = static_cast<size_t>(part.height);
  const auto stride = static_cast<size_t>(frame.stride);
  part.nv21.resize(width * height * 3 / 2);
  const auto copy_rows = [&](const uint8_t* from, size_t rows, uint8_t* to) {
    for (size_t row = 0; row < rows; ++row) std::copy_n(from + row * stride + left, width, to + row * width);
  };
  copy_rows(frame.luma() + top * stride, height, part.nv21.data());
  copy_rows(frame.chroma() + top / 2 * stride, height / 2, part.nv21.data() + width * height);
  return part;
}

}  // namespace tool
