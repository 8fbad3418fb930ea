/// The steps of a frame's road as OpenCV does them. What is kept between calls are its temporaries.
#pragma once

#include <array>
#include <cstdint>
#include <opencv2/core.hpp>
#include <opencv2/imgproc.hpp>
#include <vector>

#include "bench/pictures.h"

namespace bench::ocv {

/// A header over somebody else's memory.
cv::Mat over(const void* data, int rows, int columns, int type);

/// NV21 to interleaved RGB, studio range; `margin` rows below the picture mirror it.
void nv21_to_rgb_padded(const uint8_t* nv21, uint8_t* rgb, int width, int height, int margin);

void shrink(const uint8_t* nv21, int width, int height, uint8_t* dst, int dst_width, int dst_height,
            cv::InterpolationFlags filter);

void resize_plane(const uint8_t* plane, int width, int height, uint8_t* dst, int dst_width, int dst_height,
                  cv::InterpolationFlags filter = cv::INTER_LINEAR);

/// Bytes to -1..1.
void normalise(const uint8_t* bytes, float* floats, int count);

/// -10..10 to bytes.
void scores_to_bytes(const float* scores, uint8_t* bytes, int count);

/// Five scores a cell into five planes.
void split(const uint8_t* map, int cells, uint8_t* const (&planes)[5]);

/// Blends a label map with the one before, by how far each cell changed.
class Smoothing {
 public:
  void operator()(uint8_t* current, const uint8_t* previous, int cells);

 private:
  cv::Mat difference_, sum_, weight_now_, weight_before_;
};

}  // namespace bench::ocv
