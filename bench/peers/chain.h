/// Whole scenes and frames as the best chain of library calls: for each step the library that is fastest at
/// it.
#pragma once

#include <cstdint>
#include <vector>

#include "bench/peers/opencv_analyses.h"
#include "bench/peers/opencv_steps.h"
#include "bench/pictures.h"

namespace bench {

/// Split, enlarge, faces, figures of the largest face.
class ChainFrontScene {
 public:
  void operator()(const uint8_t* map, int width, int height, const uint8_t* luma, const uint8_t* rgb);

 private:
  Bytes planes_[5], enlarged_[5], half_;
  ocv::FaceRegions regions_;
  ocv::FaceFigures figures_;
  ocv::FaceFigures::Words words_{};
};

/// A frame's road before and behind the network, which is left out: `scores` stand for its answer.
class ChainFrame {
 public:
  enum class Side { kFront, kBack };

  ChainFrame(Side side, int width, int height, std::vector<float> scores);
  void operator()(const uint8_t* nv21);

 private:
  void shrink(const uint8_t* nv21);

  Side side_;
  int width_, height_;
  int input_side_, input_height_;
  std::vector<float> scores_, network_input_;
  Bytes small_, rgb_, maps_[2];
  int current_ = 0;
  ocv::Smoothing smoothing_;
  ChainFrontScene front_;
  ocv::BackScene back_;
};

}  // namespace bench
