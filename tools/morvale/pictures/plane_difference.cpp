#include "pictures/plane_difference.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>

#include "pictures/opencv_module.h"

namespace tool {
namespace {

double sample_difference(float a, float b) {
  if (std::memcmp(&a, &b, sizeof a) == 0) return 0;
  const double difference = std::abs(double{a} - double{b});
  return std::isnan(difference) ? std::numeric_limits<double>::infinity() : difference;
}

}  // namespace

double PlaneDifference::psnr() const {
  if (squares == 0) return std::numeric_limits<double>::infinity();
  return 10 * std::log10(double{peak} * peak * static_cast<double>(samples) / squares);
}

PlaneDifference difference(const Plane& a, const Plane& b, bool with_ssim) {
  PlaneDifference result;
  result.name = a.name;
  result.size = a.size;
  result.peak = a.peak;
  result.samples = static_cast<int64_t>(a.samples.size());
  for (size_t at = 0; at < a.samples.size(); ++at) {
    const double d = sample_difference(a.samples[at], b.samples[at]);
    result.squares += d * d;
    result.largest = std::max(result.largest, d);
    result.differing += d != 0;
  }
  if (with_ssim && !a.samples.empty()) result.ssim = opencv().structural_similarity(a, b);
  return result;
}

PlaneDifference total(const std::vector<PlaneDifference>& planes) {
  PlaneDifference sum;
  sum.name = "all";
  for (const PlaneDifference& plane : planes) {
    sum.squares += plane.squares * (double{sum.peak} * sum.peak) / (double{plane.peak} * plane.peak);
    sum.largest = std::max(sum.largest, plane.largest);
    sum.differing += plane.differing;
    sum.samples += plane.samples;
  }
  return sum;
}

}  // namespace tool
