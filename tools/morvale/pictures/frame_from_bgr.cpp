#include "pictures/frame_from_bgr.h"

#include <algorithm>

#include <morvale/morvale.h>

namespace tool {
namespace {

/// Spreads packed NV21 rows to the frame's stride. The bytes between the rows are zero.
void set_rows(Frame& frame, const std::vector<uint8_t>& packed) {
  const auto width = static_cast<size_t>(frame.width), stride = static_cast<size_t>(frame.stride);
  const auto rows = static_cast<size_t>(frame.height) * 3 / 2;
  frame.nv21.assign(stride * rows, 0);
  for (size_t row = 0; row < rows; ++row)
    std::copy_n(packed.data() + row * width, width, frame.nv21.data() + row * stride);
}

}  // namespace

Frame frame_from_bgr(const std::string& name, const cv::Mat& bgr, std::optional<int> stride) {
  const FrameSize size{bgr.cols & ~1, bgr.rows & ~1};
  check_frame_size(name, size);
  const cv::Mat even = bgr(cv::Rect(0, 0, size.width, size.height)).clone();
  Frame frame;
  frame.input = name;
  frame.width = size.width;
  frame.height = size.height;
  frame.stride = checked_stride(name, size, stride);
  std::vector<uint8_t> packed(even.total() * 3 / 2);
  BGRtoNV21(even.data, packed.data(), size.width, size.height);
  set_rows(frame, packed);
  return frame;
}

}  // namespace tool
