#include <morvale/analysis/hsv.h>

#include <cstddef>

#include "kernels/kernel_set.h"
#include "rules/hsv_pixel.h"

using namespace morvale;

void bgr2hsv_pixel(int b, int g, int r, unsigned int* hsv) {
  const Hsv c = hsv_of(r, g, b);
  hsv[0] = static_cast<unsigned>(c.hue < 0 ? c.hue + 360.0f : c.hue);
  hsv[1] = c.saturation;
  hsv[2] = c.value;
}

void bgr2hsv_pixel_v2(int b, int g, int r, int* hsv) {
  const Hsv c = hsv_of(r, g, b);
  hsv[0] = static_cast<int>(c.hue);  // not wrapped, unlike above: the face figures count on negative reds
  hsv[1] = static_cast<int>(c.saturation);
  hsv[2] = static_cast<int>(c.value);
}

int BGR2HSV(unsigned char* bgr, float* hsv, int width, int height) {
  if (width < 1 || height < 1) return 0;
  kernels().color.bgr_to_hsv(bgr, hsv, static_cast<ptrdiff_t>(width) * height);
  return 0;
}
