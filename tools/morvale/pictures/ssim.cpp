#include "pictures/ssim.h"

#include <opencv2/imgproc.hpp>

namespace tool {
namespace {

cv::Mat mat_of(const Plane& plane) {
  cv::Mat mat;
  cv::Mat(plane.size.height, plane.size.width, CV_32F, const_cast<float*>(plane.samples.data()))
      .convertTo(mat, CV_64F);
  return mat;
}

constexpr int kWindow = 11;

/// Means under the window.
cv::Mat local_mean(const cv::Mat& mat) {
  constexpr double kSigma = 1.5;
  cv::Mat mean;
  cv::GaussianBlur(mat, mean, {kWindow, kWindow}, kSigma, kSigma, cv::BORDER_REFLECT_101);
  return mean;
}

/// The positions whose window lies inside the picture; all of a side that is shorter than the window.
cv::Range inner(int side) {
  constexpr int kBorder = kWindow / 2;
  return side >= kWindow ? cv::Range(kBorder, side - kBorder) : cv::Range(0, side);
}

}  // namespace

double structural_similarity(const Plane& plane_a, const Plane& plane_b) {
  constexpr double kC1 = 0.01 * 255 * (0.01 * 255), kC2 = 0.03 * 255 * (0.03 * 255);
  const cv::Mat a = mat_of(plane_a), b = mat_of(plane_b);
  const cv::Mat mean_a = local_mean(a), mean_b = local_mean(b);
  const cv::Mat aa = mean_a.mul(mean_a), bb = mean_b.mul(mean_b), ab = mean_a.mul(mean_b);
  const cv::Mat variance_a = local_mean(a.mul(a)) - aa, variance_b = local_mean(b.mul(b)) - bb;
  const cv::Mat covariance = local_mean(a.mul(b)) - ab;
  const cv::Mat above = (2 * ab + kC1).mul(2 * covariance + kC2);
  const cv::Mat below = (aa + bb + kC1).mul(variance_a + variance_b + kC2);
  const cv::Mat similarity = above / below;
  return cv::mean(similarity(inner(a.rows), inner(a.cols)))[0];
}

}  // namespace tool
