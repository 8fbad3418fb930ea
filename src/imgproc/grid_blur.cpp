#include <morvale/imgproc/grid_blur.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

namespace morvale {
namespace {

struct Kernel {
  const uint16_t* weights;
  int radius, bits;
};

bool marked(const uint8_t* grid, int x, int y) {
  return grid[static_cast<ptrdiff_t>(y / kBlurCell) * kBlurGridColumns + x / kBlurCell] != 0;
}

/// The weighted mean around position `at` of a line of n pixels, `step` bytes apart; the line's ends repeat.
uint8_t weighted_mean(const uint8_t* line, ptrdiff_t step, int at, int n, const Kernel& kernel) {
  int sum = 1 << (kernel.bits - 1);
  for (int i = -kernel.radius; i <= kernel.radius; ++i) {
    sum += kernel.weights[i + kernel.radius] * line[std::clamp(at + i, 0, n - 1) * step];
  }
  return static_cast<uint8_t>(sum >> kernel.bits);
}

}  // namespace
}  // namespace morvale

using namespace morvale;

int GFilterCreation(float sigma, int radius, int bits, uint16_t* weights) {
  if (radius < 0 || radius > kMaxBlurRadius || (bits != 8 && bits != 14)) return -1;
  std::array<double, kMaxBlurRadius + 1> shape{};  // by distance from the centre
  const double s = sigma;
  double total = shape[0] = 1.0;
  for (int i = 1; i <= radius; ++i) {
    const double g = s > 0 ? std::exp(-i * i / (2 * s * s)) : 0.0;
    shape[static_cast<size_t>(i)] = g;
    total += 2 * g;
  }
  const int one = 1 << bits;
  double outside = 0.0;  // exact weight of one side so far, and what of it is already given out
  int given = 0;
  for (int i = radius; i >= 1; --i) {
    outside += shape[static_cast<size_t>(i)] / total * one;
    const int upto = static_cast<int>(std::lround(outside));
    weights[radius - i] = weights[radius + i] = static_cast<uint16_t>(upto - given);
    given = upto;
  }
  weights[radius] = static_cast<uint16_t>(one - 2 * given);
  return 0;
}

void GaussianBlur_Grid_Hori(const uint8_t* src, uint8_t* dst, const uint8_t* grid, int width, int height,
                            const uint16_t* weights, int radius, int bits) {
  const Kernel kernel{weights, radius, bits};
  for (int y = 0; y < height; ++y) {
    const ptrdiff_t row = static_cast<ptrdiff_t>(y) * width;
    for (int x = 0; x < width; ++x) {
      dst[row + x] = marked(grid, x, y) ? weighted_mean(src + row, 1, x, width, kernel) : src[row + x];
    }
  }
}

void GaussianBlur_Grid_Vert(const uint8_t* src, uint8_t* dst, const uint8_t* grid, int width, int height,
                            const uint16_t* weights, int radius, int bits) {
  const Kernel kernel{weights, radius, bits};
  for (int y = 0; y < height; ++y) {
    const ptrdiff_t row = static_cast<ptrdiff_t>(y) * width;
    for (int x = 0; x < width; ++x) {
      dst[row + x] = marked(grid, x, y) ? weighted_mean(src + x, width, y, height, kernel) : src[row + x];
    }
  }
}
