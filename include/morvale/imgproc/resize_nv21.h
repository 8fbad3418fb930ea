/// Scaling of NV21 images (layout: color_convert.h). Free functions over the caller's buffers: no allocation,
/// no state, no checks beyond those stated. Rows are packed: stride = width.
#pragma once

#include <cstdint>

#include <morvale/core/export.h>

/// Scales an NV21 image to any size.
///   luma, vu  srcWidth x srcHeight; vu has srcHeight / 2 rows, stride srcWidth
///   dst       dstWidth x dstHeight, contiguous NV21
/// Steps are Q8: step = (source size << 8) / destination size, truncated, 0 for a destination size of 0.
/// Output i sits at source position i * step, integer part and fraction f of 256; so sampling starts at the
/// top-left corner, not at pixel centres. Chroma uses the same steps on V,U pairs and chroma rows. Sizes must
/// stay below 2^23.
///
/// Both fractions exactly 128 (ratios 1.5, 2.5, ...): half-ratio averaging. With ix, iy the integer parts,
/// two output columns consume 2 * ix + 1 source columns and two output rows 2 * iy + 1 source rows. From
/// source base (r, c): top-left = S(r, c); top-right = mean of S(r, c + ix), S(r, c + ix + 1); bottom-left =
/// mean of S(r + iy, c), S(r + iy + 1, c); bottom-right = mean of the four; means truncate. Rows come in
/// twos: an odd number of chroma rows (dstHeight / 2) gets one extra row written behind the image. Odd
/// columns end with the row.
///
/// Otherwise bilinear: with neighbours a b / c d and fractions fx, fy
///   v = ((256 - fx) a + fx b) (256 - fy) + ((256 - fx) c + fx d) fy,  output = min(v >> 16, 255), truncated.
///
/// Chroma has dstHeight / 2 rows and (dstWidth + 1) / 2 pairs (an odd width keeps only the V of the last
/// one); none when dstHeight < 2. Neighbours right of the last column or below the last row are read as they
/// lie in memory when their weight is not 0; a neighbour of weight 0 is not read. A shrink of an even-sized
/// picture reads nothing outside it, with two exceptions: an odd dstWidth above half of srcWidth may read one
/// pair behind the last chroma row, and an extra row of the half-ratio rule one row behind its plane. Source
/// and destination are both empty or both not.
MORVALE_API void resize_NV21_opt(const uint8_t* luma, const uint8_t* vu, uint8_t* dst, int srcWidth,
                                 int srcHeight, int dstWidth, int dstHeight);

/// The same from a contiguous source.
MORVALE_API void resize_NV21(const uint8_t* src, uint8_t* dst, int srcWidth, int srcHeight, int dstWidth,
                             int dstHeight);

/// Enlarges an NV21 image to 2 * width x 2 * height.
/// Luma: even columns of even rows copy the source, odd columns are the rounded mean (a + b + 1) >> 1 of
/// their neighbours, odd rows the rounded mean of the rows above and below. Chroma: the same on V,U pairs.
/// The last column, row, pair and chroma row repeat the edge, so nothing is read or written outside the
/// images.
///   src  width x height, chroma height / 2 rows; an odd width has no chroma for its last column: its chroma
///        rows hold width / 2 pairs and one byte that is not read
///   dst  luma 2 * width x 2 * height, chroma 2 * (height / 2) rows of 2 * width bytes written (an odd height
///        leaves the last of the `height` chroma rows untouched); an odd width repeats the last pair
/// Writes nothing when a size is below 1, no chroma when height < 2 or width < 2.
MORVALE_API void resize_NV21_2x_up(const uint8_t* src, uint8_t* dst, int width, int height);

/// Halves an NV21 image by sampling: luma (x, y) = source (2x, 2y); pair k of chroma row j = source pair 2k
/// of chroma row 2j. No filtering.
///   dst  width / 2 x height / 2 (truncated): luma, then height / 4 chroma rows of width / 4 pairs at stride
///        width / 2; further chroma bytes are left as they are
/// Any width; nothing outside the images is read or written. Writes nothing when height < 2 or width < 2,
/// no chroma when height < 4.
MORVALE_API void resize_NV21_2x_down(const uint8_t* src, uint8_t* dst, int width, int height);

/// Shrinks an NV21 image to a third, averaging: each output is (sum of its 3 x 3 source block + 4) / 9, V and
/// U apart.
///   dst  width / 3 x height / 3 (truncated): luma, then height / 6 chroma rows of width / 6 pairs at stride
///        width / 3; further chroma bytes are left as they are
/// Writes nothing when height < 3 or width < 3, no chroma when height < 6.
MORVALE_API void resize_NV21_3x_down(const uint8_t* src, uint8_t* dst, int width, int height);
