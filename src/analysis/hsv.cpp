#include <morvale/analysis/hsv.h>

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "kernels/kernel_set.h"

namespace morvale {
namespace {

/// Hue in degrees, -60 < H <= 300, and saturation and value 0..255.
struct Hsv {
  float hue;
  unsigned saturation, value;
};

/// The common part of both one-pixel conversions. Every step is in the precision it is written in: the hue of
/// a red passes through double and is rounded to float before anyone truncates it.
Hsv convert(int b, int g, int r) {
  const float red = static_cast<float>(r) / 255.0f;
  const float green = static_cast<float>(g) / 255.0f;
  const float blue = static_cast<float>(b) / 255.0f;
  const float largest = std::max(std::max(red, green), blue);
  const float delta = largest - std::min(std::min(red, green), blue);
  const auto to_byte = [](double v) { return std::min(static_cast<unsigned>(v), 255u); };

  Hsv out{0.0f, 0, to_byte(static_cast<double>(largest) * 255.0)};
  if (!(delta > 0)) return out;
  if (largest == red) {
    out.hue = static_cast<float>(std::fmod(static_cast<double>((green - blue) / delta), 6.0) * 60.0);
  } else if (largest == green) {
    out.hue = ((blue - red) / delta + 2.0f) * 60.0f;
  } else {
    out.hue = ((red - green) / delta + 4.0f) * 60.0f;
  }
  out.saturation = to_byte(static_cast<double>(delta / largest) * 255.0);
  return out;
}

}  // namespace
}  // namespace morvale

using namespace morvale;

void bgr2hsv_pixel(int b, int g, int r, unsigned int* hsv) {
  const Hsv c = convert(b, g, r);
  hsv[0] = static_cast<unsigned>(c.hue < 0 ? c.hue + 360.0f : c.hue);
  hsv[1] = c.saturation;
  hsv[2] = c.value;
}

void bgr2hsv_pixel_v2(int b, int g, int r, int* hsv) {
  const Hsv c = convert(b, g, r);
  hsv[0] = static_cast<int>(c.hue);  // not wrapped, unlike above: the face figures count on negative reds
  hsv[1] = static_cast<int>(c.saturation);
  hsv[2] = static_cast<int>(c.value);
}

int BGR2HSV(unsigned char* bgr, float* hsv, int width, int height) {
  if (width < 1 || height < 1) return 0;
  kernels().color.bgr_to_hsv(bgr, hsv, static_cast<ptrdiff_t>(width) * height);
  return 0;
}
