#include "bench/peers/opencv_steps.h"

namespace bench::ocv {

cv::Mat over(const void* data, int rows, int columns, int type) {
  return cv::Mat(rows, columns, type, const_cast<void*>(data));
}

void nv21_to_rgb_padded(const uint8_t* nv21, uint8_t* rgb, int width, int height, int margin) {
  const cv::Mat luma = over(nv21, height, width, CV_8UC1);
  const cv::Mat chroma = over(nv21 + width * height, height / 2, width / 2, CV_8UC2);
  cv::Mat whole = over(rgb, height + margin, width, CV_8UC3);
  cv::Mat picture = whole.rowRange(0, height);
  cv::cvtColorTwoPlane(luma, chroma, picture, cv::COLOR_YUV2RGB_NV21);
  if (margin == 0) return;
  cv::copyMakeBorder(picture, whole, 0, margin, 0, 0, cv::BORDER_REFLECT | cv::BORDER_ISOLATED);
}

void shrink(const uint8_t* nv21, int width, int height, uint8_t* dst, int dst_width, int dst_height,
            cv::InterpolationFlags filter) {
  resize_plane(nv21, width, height, dst, dst_width, dst_height, filter);
  const cv::Mat chroma = over(nv21 + width * height, height / 2, width / 2, CV_8UC2);
  cv::Mat small = over(dst + dst_width * dst_height, dst_height / 2, dst_width / 2, CV_8UC2);
  cv::resize(chroma, small, small.size(), 0, 0, filter);
}

void resize_plane(const uint8_t* plane, int width, int height, uint8_t* dst, int dst_width, int dst_height,
                  cv::InterpolationFlags filter) {
  cv::Mat small = over(dst, dst_height, dst_width, CV_8UC1);
  cv::resize(over(plane, height, width, CV_8UC1), small, small.size(), 0, 0, filter);
}

void normalise(const uint8_t* bytes, float* floats, int count) {
  cv::Mat to = over(floats, 1, count, CV_32FC1);
  over(bytes, 1, count, CV_8UC1).convertTo(to, CV_32F, 2.0 / 255, -1);
}

void scores_to_bytes(const float* scores, uint8_t* bytes, int count) {
  cv::Mat to = over(bytes, 1, count, CV_8UC1);
  over(scores, 1, count, CV_32FC1).convertTo(to, CV_8U, 12.75, 127);  // it rounds: half a byte less
}

void split(const uint8_t* map, int cells, uint8_t* const (&planes)[5]) {
  cv::Mat to[5];
  for (int k = 0; k < 5; ++k) to[k] = over(planes[k], 1, cells, CV_8UC1);
  cv::split(over(map, 1, cells, CV_8UC(5)), to);
}

void Smoothing::operator()(uint8_t* current, const uint8_t* previous, int cells) {
  cv::Mat now = over(current, cells, 5, CV_8UC1), before = over(previous, cells, 5, CV_8UC1);
  cv::absdiff(now, before, difference_);
  cv::reduce(difference_, sum_, 1, cv::REDUCE_SUM, CV_32F);
  constexpr double kScale = 1.0 / 512;  // (256 - sum / 2) / 256
  sum_.convertTo(weight_before_, CV_32F, -kScale, 1);
  sum_.convertTo(weight_now_, CV_32F, kScale);
  cv::Mat now_cells = now.reshape(5), before_cells = before.reshape(5);
  cv::blendLinear(before_cells, now_cells, weight_before_, weight_now_, now_cells);
}

}  // namespace bench::ocv
