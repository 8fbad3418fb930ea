#pragma once

#include "pictures/picture.h"

namespace tool {

/// Mean structural similarity (Wang, Bovik, Sheikh, Simoncelli, 2004): Gaussian window of 11 x 11 pixels with
/// standard deviation 1.5, K1 = 0.01, K2 = 0.03, L = 255.
double structural_similarity(const Plane& plane_a, const Plane& plane_b);

}  // namespace tool
