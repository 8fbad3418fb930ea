/// Hue, saturation and value of one pixel, as the face figures and the exported conversions share them.
#pragma once

#include <algorithm>
#include <cmath>

namespace morvale {

/// Hue in degrees, -60 <= H < 300, and saturation and value 0..255.
struct Hsv {
  float hue;
  unsigned saturation, value;
};

/// Every step is in the precision it is written in: the hue of a red passes through double and is rounded to
/// float before anyone truncates it. A tie for the largest channel goes to red, then green.
inline Hsv hsv_of(int r, int g, int b) {
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

}  // namespace morvale
