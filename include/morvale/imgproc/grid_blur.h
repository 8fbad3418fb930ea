/// Separable Gaussian blur, applied only inside the cells that a grid marks. Free functions over the caller's
/// buffers: no allocation, no state. Floating point must round to nearest, as it does unless the calling
/// thread was set otherwise.
///
/// The grid has one byte per cell of 8 x 8 pixels, morvale::kBlurGridColumns bytes a row, whatever the
/// picture's width: pixel (x, y) belongs to grid[(y / 8) * kBlurGridColumns + x / 8]; nonzero marks it. So a
/// picture may be up to 4800 pixels wide.
#pragma once

#include <cstdint>

#include <morvale/core/export.h>

namespace morvale {

constexpr int kBlurGridColumns = 600;
constexpr int kBlurCell = 8;  ///< pixels, in both directions
constexpr int kMaxBlurRadius = 127;

}  // namespace morvale

/// Weights of a Gaussian of standard deviation `sigma` (pixels) in fixed point with `bits` fractional bits,
/// 8 or 14. weights has room for 2 * radius + 1 values; weights[radius] is the centre. They are
/// exp(-i^2 / (2 sigma^2)), normalised and rounded from the outside in, each rounding error carried to the
/// next weight inwards: symmetric, never negative, and their sum is 1 << bits exactly. A sigma that is not
/// positive gives the identity: all weight in the centre. Returns 0, or -1 and writes nothing when radius is
/// outside 0..127 or bits is neither 8 nor 14.
MORVALE_API int GFilterCreation(float sigma, int radius, int bits, uint16_t* weights);

/// One pass of the blur, along rows (_Hori) or columns (_Vert):
///   marked pixels    (sum of weight * neighbour + half) >> bits, half = 1 << (bits - 1); neighbours outside
///                    the picture repeat its edge, neighbours in unmarked cells take part as they are
///   unmarked pixels  copied
///   src, dst         width x height bytes, stride width; dst all written, nothing beyond; must not overlap
///   weights          2 * radius + 1 of them, their sum at most 1 << bits; as GFilterCreation makes them
/// A blur in both directions is _Hori into a buffer, then _Vert from it. Writes nothing when a size is
/// below 1.
MORVALE_API void GaussianBlur_Grid_Hori(const uint8_t* src, uint8_t* dst, const uint8_t* grid, int width,
                                        int height, const uint16_t* weights, int radius, int bits);
MORVALE_API void GaussianBlur_Grid_Vert(const uint8_t* src, uint8_t* dst, const uint8_t* grid, int width,
                                        int height, const uint16_t* weights, int radius, int bits);
