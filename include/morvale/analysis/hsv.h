/// Blue-green-red to hue, saturation, value. No state, no allocation; callable from any thread.
/// Hexcone model (A. R. Smith, "Color gamut transform pairs", 1978), H in degrees, S and V scaled to 0..255.
/// Floating point must round to nearest, as it does unless the calling thread was set otherwise.
#pragma once

#include <morvale/core/export.h>

/// One pixel, each channel 0..255. hsv[0] = hue in whole degrees 0..359, hsv[1] = saturation 0..255,
/// hsv[2] = value 0..255 (the largest channel). Float32 arithmetic, results truncated; a tie for the largest
/// channel goes to red, then green. Grey has hue and saturation 0.
MORVALE_API void bgr2hsv_pixel(int b, int g, int r, unsigned int* hsv);

/// The same with a signed hue that is not wrapped: -60..299, truncated toward zero. Reds that lean to magenta
/// are so negative. The figures of a face are taken of hues like these.
MORVALE_API void bgr2hsv_pixel_v2(int b, int g, int r, int* hsv);

/// A whole image. bgr: 3 bytes a pixel, row stride 3 * width; hsv: 3 floats a pixel, row stride 3 * width
/// floats: H in degrees 0 <= H < 360, S 0..255, V 0..255, not rounded. Nothing is written when a size is
/// below 1. Returns 0.
MORVALE_API int BGR2HSV(unsigned char* bgr, float* hsv, int width, int height);
