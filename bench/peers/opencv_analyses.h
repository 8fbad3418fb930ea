/// The scene analyses put together from OpenCV calls.
#pragma once

#include <array>
#include <cstdint>
#include <opencv2/core.hpp>
#include <vector>

namespace bench::ocv {

/// Mask and share of persons, then regions as the boxes of outer contours of the mask, grown by 16 x 16.
class FaceRegions {
 public:
  enum class By { kContours, kComponents };

  /// planes: the five score planes.
  const std::vector<cv::Rect>& operator()(const uint8_t* const (&planes)[5], int width, int height,
                                          By by = By::kContours);
  const cv::Mat& mask() const { return mask_; }

 private:
  cv::Mat best_face_, best_other_, beaten_, won_, mask_, humans_, grown_, labels_, stats_, centres_;
  std::vector<std::vector<cv::Point>> contours_;
  std::vector<cv::Rect> boxes_;
  int human_cells_ = 0;
};

/// Bright pixels, mean luma, and per channel of 8-bit HSV the means of the whole trimmed list and of its
/// ends, from histograms.
class FaceFigures {
 public:
  using Words = std::array<int, 13>;

  Words operator()(const uint8_t* c2, const uint8_t* luma, const uint8_t* rgb, const cv::Mat& mask,
                   const cv::Rect& face);

 private:
  cv::Mat luma_mask_, colour_mask_, scored_, bright_, hsv_, histogram_;
};

/// Masks, share, the largest region's box and the 19 x 15 grid, packed.
class BackScene {
 public:
  uint32_t operator()(const uint8_t* map, int width, int height);

 private:
  cv::Mat planes_[5], best_, rival_, person_, head_, share_, grown_, grid_;
  std::vector<std::vector<cv::Point>> contours_;
};

}  // namespace bench::ocv
