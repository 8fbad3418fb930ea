#include "kernels/color_rows.h"

#include <algorithm>

namespace morvale::portable {
namespace {

struct Rgb {
  uint8_t r, g, b;
};

uint8_t to_byte(int32_t sum, YuvRounding rounding) {
  return static_cast<uint8_t>(std::clamp((rounding == kRound ? sum + 8192 : sum) >> 14, 0, 255));
}

template <YuvRounding kRounding>
Rgb decode_pixel(uint8_t luma, int u, int v) {
  const int y = luma << 14;
  u -= 128;
  v -= 128;
  return {to_byte(y + kRedOfV * v, kRounding), to_byte(y + kGreenOfV * v + kGreenOfU * u, kRounding),
          to_byte(y + kBlueOfU * u, kRounding)};
}

template <YuvFormat kFormat>
void put(uint8_t* const planes[3], ptrdiff_t at, Rgb c) {
  if constexpr (kFormat == kVuToBgrPlanes) {
    planes[0][at] = c.b;
    planes[1][at] = c.g;
    planes[2][at] = c.r;
  } else {
    constexpr bool kRedFirst = kFormat != kVuToBgr;
    uint8_t* p = planes[0] + at;
    p[0] = kRedFirst ? c.r : c.b;
    p[1] = c.g;
    p[2] = kRedFirst ? c.b : c.r;
  }
}

template <YuvFormat kFormat, YuvRounding kRounding>
void decode(const YuvRows& src, const ColorRowsOut& dst, ptrdiff_t n) {
  constexpr int kV = kFormat == kUvToRgb ? 1 : 0;
  constexpr int kStep = kFormat == kVuToBgrPlanes ? 1 : 3;
  for (int row = 0; row < src.count; ++row) {
    const uint8_t* luma = src.luma + row * src.luma_stride;
    const uint8_t* chroma = src.chroma + (row / 2) * src.chroma_stride;
    for (ptrdiff_t x = 0; x < n; ++x) {
      const uint8_t* pair = chroma + (x & ~ptrdiff_t{1});
      put<kFormat>(dst.planes, row * dst.stride + kStep * x,
                   decode_pixel<kRounding>(luma[x], pair[1 - kV], pair[kV]));
    }
  }
}

uint8_t luma_byte(int r, int g, int b) {
  const float y =
      0.299f * static_cast<float>(r) + 0.587f * static_cast<float>(g) + 0.114f * static_cast<float>(b);
  return static_cast<uint8_t>(std::min(y, 255.0f));
}

/// Rounds half away from zero and moves -128..127 to 0..255; 128 (from 127.5) is clamped.
uint8_t chroma_byte(double value) {
  const float v = static_cast<float>(value);
  const int rounded = static_cast<int>(v > 0 ? v + 0.5f : v - 0.5f);
  return static_cast<uint8_t>(std::clamp(rounded, -128, 127) + 128);
}

template <int kRed, int kBlue>
void encode(const uint8_t* pixels, uint8_t* luma, uint8_t* vu, ptrdiff_t n) {
  for (ptrdiff_t x = 0; x < n; ++x) {
    const uint8_t* p = pixels + 3 * x;
    const int r = p[kRed], g = p[1], b = p[kBlue];
    luma[x] = luma_byte(r, g, b);
    if (vu == nullptr || (x & 1) != 0) continue;
    vu[x] = chroma_byte(0.5 * r - 0.418688 * g - 0.081312 * b);
    vu[x + 1] = chroma_byte(-0.168736 * r - 0.331264 * g + 0.5 * b);
  }
}

void bgr_to_grey(const uint8_t* bgr, uint8_t* grey, ptrdiff_t n) {
  for (ptrdiff_t i = 0; i < n; ++i) {
    const uint8_t* p = bgr + 3 * i;
    grey[i] = static_cast<uint8_t>((kGreyOfBlue * p[0] + kGreyOfGreen * p[1] + kGreyOfRed * p[2]) >> 16);
  }
}

/// Channels are not divided by 255. A tie for the largest goes to red, then green.
void hsv_pixel(const uint8_t* bgr, float* hsv) {
  const float b = bgr[0], g = bgr[1], r = bgr[2];
  const float largest = std::max(std::max(r, g), b);
  const float delta = largest - std::min(std::min(r, g), b);
  float hue = 0.0f, saturation = 0.0f;
  if (delta > 0) {
    if (largest == r) {
      hue = (g - b) * 60.0f / delta;
    } else if (largest == g) {
      hue = (b - r) * 60.0f / delta + 120.0f;
    } else {
      hue = (r - g) * 60.0f / delta + 240.0f;
    }
    if (hue < 0) hue += 360.0f;
    saturation = delta * 255.0f / largest;
  }
  hsv[0] = hue;
  hsv[1] = saturation;
  hsv[2] = largest;
}

void bgr_to_hsv(const uint8_t* bgr, float* hsv, ptrdiff_t n) {
  for (ptrdiff_t i = 0; i < n; ++i) hsv_pixel(bgr + 3 * i, hsv + 3 * i);
}

}  // namespace

constinit const ColorRows kColorRows = {
    {{decode<kVuToRgb, kTruncate>, decode<kVuToRgb, kRound>},
     {decode<kVuToBgr, kTruncate>, decode<kVuToBgr, kRound>},
     {decode<kUvToRgb, kTruncate>, decode<kUvToRgb, kRound>},
     {decode<kVuToBgrPlanes, kTruncate>, decode<kVuToBgrPlanes, kRound>}},
    encode<0, 2>,
    encode<2, 0>,
    bgr_to_grey,
    bgr_to_hsv,
};

}  // namespace morvale::portable
