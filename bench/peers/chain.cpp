#include "bench/peers/chain.h"

#include <algorithm>
#include <utility>

#include "bench/peers/libyuv_steps.h"

namespace bench {

void ChainFrontScene::operator()(const uint8_t* map, int width, int height, const uint8_t* luma,
                                 const uint8_t* rgb) {
  const auto cells = static_cast<size_t>(width * height);
  for (int k = 0; k < 5; ++k) {
    planes_[k].resize(cells);
    enlarged_[k].resize(16 * cells);
  }
  ocv::split(map, width * height,
             {planes_[0].data(), planes_[1].data(), planes_[2].data(), planes_[3].data(), planes_[4].data()});
  for (int k = 0; k < 5; ++k) {
    yuv::quadruple(planes_[k].data(), width, height, half_, enlarged_[k].data());
  }
  const auto& c = enlarged_;
  const auto& boxes =
      regions_({c[0].data(), c[1].data(), c[2].data(), c[3].data(), c[4].data()}, 4 * width, 4 * height);
  if (!boxes.empty()) words_ = figures_(c[2].data(), luma, rgb, regions_.mask(), boxes.front());
}

ChainFrame::ChainFrame(Side side, int width, int height, std::vector<float> scores)
    : side_(side),
      width_(width),
      height_(height),
      input_side_(side == Side::kFront ? 256 : 128),
      input_height_(height * input_side_ / width),
      scores_(std::move(scores)) {
  const auto pixels = static_cast<size_t>(input_side_ * input_side_);
  small_.resize(pixels * 3 / 2);
  rgb_.resize(pixels * 3);
  network_input_.resize(pixels * 3);
  for (Bytes& map : maps_) map.resize(scores_.size());
}

void ChainFrame::shrink(const uint8_t* nv21) {
  // The back camera's step is whole: nearest gives the rule's own bytes, and is the fastest.
  const auto filter = side_ == Side::kFront ? cv::INTER_LINEAR : cv::INTER_NEAREST;
  ocv::shrink(nv21, width_, height_, small_.data(), input_side_, input_height_, filter);
}

void ChainFrame::operator()(const uint8_t* nv21) {
  shrink(nv21);
  const int margin = std::min(input_side_ - input_height_, input_height_);
  yuv::nv21_to_rgb_padded(small_.data(), rgb_.data(), input_side_, input_height_, margin);
  ocv::normalise(rgb_.data(), network_input_.data(), static_cast<int>(network_input_.size()));

  const auto scores = static_cast<int>(scores_.size());
  Bytes &now = maps_[current_], &before = maps_[1 - current_];
  ocv::scores_to_bytes(scores_.data(), now.data(), scores);
  smoothing_(now.data(), before.data(), scores / 5);
  current_ = 1 - current_;

  const int map_width = input_side_ / 4, map_height = input_height_ / 4;
  if (side_ == Side::kFront) {
    front_(now.data(), map_width, map_height, small_.data(), rgb_.data());
  } else {
    back_(now.data(), map_width, map_height);
  }
}

}  // namespace bench
