#include "bench/peers/opencv_analyses.h"

#include <algorithm>

#include "bench/peers/opencv_steps.h"

namespace bench::ocv {
namespace {

const cv::Mat& square(int side) {
  static const cv::Mat small = cv::getStructuringElement(cv::MORPH_RECT, {3, 3});
  static const cv::Mat large = cv::getStructuringElement(cv::MORPH_RECT, {16, 16});
  return side == 3 ? small : large;
}

/// Mean of the values between two places of the sorted list that the histogram stands for.
int band_mean(const float* counts, double first, double end) {
  double seen = 0, sum = 0;
  for (int value = 0; value < 256 && seen < end; ++value) {
    const double next = seen + static_cast<double>(counts[value]);
    sum += value * std::max(std::min(next, end) - std::max(seen, first), 0.0);
    seen = next;
  }
  return end > first ? static_cast<int>(sum / (end - first)) : 0;
}

}  // namespace

const std::vector<cv::Rect>& FaceRegions::operator()(const uint8_t* const (&planes)[5], int width, int height,
                                                     By by) {
  cv::Mat c[5];
  for (int k = 0; k < 5; ++k) c[k] = over(planes[k], height, width, CV_8UC1);

  cv::max(c[1], c[4], best_other_);
  cv::max(best_other_, c[2], beaten_);
  cv::compare(c[0], beaten_, humans_, cv::CMP_LE);
  human_cells_ = cv::countNonZero(humans_);

  cv::max(best_other_, c[0], best_other_);
  cv::max(c[2], c[3], best_face_);
  cv::compare(best_face_, best_other_, won_, cv::CMP_GT);
  cv::compare(best_face_, 200, mask_, cv::CMP_GE);
  cv::bitwise_and(mask_, won_, mask_);
  cv::dilate(mask_, grown_, square(16));

  boxes_.clear();
  if (by == By::kComponents) {
    const int count = cv::connectedComponentsWithStats(grown_, labels_, stats_, centres_, 4);
    for (int i = 1; i < count; ++i) {
      const int* s = stats_.ptr<int>(i);
      boxes_.emplace_back(s[cv::CC_STAT_LEFT], s[cv::CC_STAT_TOP], s[cv::CC_STAT_WIDTH],
                          s[cv::CC_STAT_HEIGHT]);
    }
    return boxes_;
  }
  cv::findContours(grown_, contours_, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
  for (const auto& contour : contours_) boxes_.push_back(cv::boundingRect(contour));
  std::sort(boxes_.begin(), boxes_.end(), [](const auto& a, const auto& b) { return a.area() > b.area(); });
  return boxes_;
}

FaceFigures::Words FaceFigures::operator()(const uint8_t* c2, const uint8_t* luma, const uint8_t* rgb,
                                           const cv::Mat& mask, const cv::Rect& face) {
  const int width = mask.cols, height = mask.rows;
  const cv::Mat scores = over(c2, height, width, CV_8UC1)(face), face_mask = mask(face);
  const cv::Mat brightness = over(luma, height, width, CV_8UC1)(face);
  cv::compare(scores, 51, scored_, cv::CMP_GE);
  cv::bitwise_and(scored_, face_mask, luma_mask_);
  cv::compare(scores, 201, scored_, cv::CMP_GE);
  cv::bitwise_and(scored_, face_mask, colour_mask_);

  Words words{};
  size_t next = 0;
  words[next++] = static_cast<int>(cv::mean(brightness, luma_mask_)[0]);
  for (const int limit : {200, 230}) {
    cv::compare(brightness, limit, bright_, cv::CMP_GT);
    cv::bitwise_and(bright_, luma_mask_, bright_);
    words[next++] = cv::countNonZero(bright_);
  }

  cv::cvtColor(over(rgb, height, width, CV_8UC3)(face), hsv_, cv::COLOR_RGB2HSV_FULL);
  const double samples = cv::countNonZero(colour_mask_);
  for (int channel = 0; channel < 3; ++channel) {
    const int bins = 256;
    const float range[] = {0, 256};
    const float* ranges[] = {range};
    cv::calcHist(&hsv_, 1, &channel, colour_mask_, histogram_, 1, &bins, ranges);
    const float* counts = histogram_.ptr<float>();
    const int mean = band_mean(counts, 0.03 * samples, 0.97 * samples);
    words[next++] = mean;
    words[next++] = std::abs(mean - band_mean(counts, 0.03 * samples, 0.10 * samples));
    words[next++] = std::abs(band_mean(counts, 0.90 * samples, 0.97 * samples) - mean);
  }
  words[next] = face.area() * 1000 / (width * height);
  return words;
}

uint32_t BackScene::operator()(const uint8_t* map, int width, int height) {
  cv::split(over(map, height, width, CV_8UC(5)), planes_);
  const auto& c = planes_;
  cv::max(c[1], c[3], best_);
  cv::max(c[0], c[4], rival_);
  cv::max(best_, rival_, person_);
  cv::compare(c[2], person_, head_, cv::CMP_GT);
  cv::max(best_, c[2], best_);
  cv::compare(best_, rival_, person_, cv::CMP_GT);
  cv::max(best_, c[0], best_);
  cv::compare(c[4], best_, share_, cv::CMP_GT);
  auto hash = static_cast<uint32_t>(cv::countNonZero(share_));

  cv::dilate(head_, grown_, square(3));
  cv::findContours(grown_, contours_, cv::RETR_EXTERNAL, cv::CHAIN_APPROX_SIMPLE);
  cv::Rect largest;
  for (const auto& contour : contours_) {
    const cv::Rect box = cv::boundingRect(contour);
    if (box.area() > largest.area()) largest = box;
  }
  hash += static_cast<uint32_t>(largest.area());

  cv::resize(person_, grid_, {19, 15}, 0, 0, cv::INTER_LINEAR);
  uint32_t words[9] = {};
  for (size_t i = 0; i < 285; ++i) words[i / 32] = words[i / 32] << 1 | (grid_.data[i] >> 7);
  for (const uint32_t word : words) hash ^= word;
  return hash;
}

}  // namespace bench::ocv
