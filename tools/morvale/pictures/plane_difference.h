/// How far two pictures are apart, channel by channel.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "pictures/picture.h"

namespace tool {

struct PlaneDifference {
  std::string name;
  FrameSize size;
  double squares = 0;  ///< sum of the squared differences
  double largest = 0;  ///< infinite where a sample of only one picture is no number
  int64_t differing = 0, samples = 0;
  float peak = 255;
  std::optional<double> ssim;  ///< absent for HSV

  /// Infinite for equal planes.
  double psnr() const;
};

/// `with_ssim`: 8-bit channels only.
PlaneDifference difference(const Plane& a, const Plane& b, bool with_ssim);

/// All planes as one, without SSIM.
PlaneDifference total(const std::vector<PlaneDifference>& planes);

}  // namespace tool
