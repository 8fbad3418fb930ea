/// Scaling of one 8-bit plane. Free functions over the caller's buffers: no allocation, no state, no checks
/// beyond those stated. Rows are packed: stride = width. Source and destination must not overlap.
#pragma once

#include <cstdint>

#include <morvale/core/export.h>

/// Scales a plane to any size: the luma rule of resize_NV21_opt (resize_nv21.h), half-ratio averaging or
/// bilinear, truncating, sampled from the top-left corner. In the half-ratio case an odd dstHeight gets one
/// extra row written behind the image. Nothing is written when a destination size is below 1.
MORVALE_API void resize_Y_1(const uint8_t* src, uint8_t* dst, int srcWidth, int srcHeight, int dstWidth,
                            int dstHeight);

/// Enlarges a plane four times in each direction.
///   src    width x height bytes
///   dst    4 * width x 4 * height bytes; all written, nothing beyond
///   blend  (wa * a + wb * b + 1) >> 8, weights 255:1, 192:64, 128:128, 64:192. The first output of four is a
///          255:1 blend because a full weight of 256 does not fit a byte: not a plain copy.
///   edges  the last column is repeated four times; the last three rows copy row 4 * height - 4
/// Rows 4 * j keep what the horizontal pass wrote; only the three rows between are blended downwards.
/// Writes nothing when a size is below 1.
MORVALE_API void resize_y_4x_up(const uint8_t* src, uint8_t* dst, int width, int height);

/// Enlarges a plane two times in each direction: even outputs copy, odd outputs are (a + b + 1) >> 1 of their
/// neighbours, first along rows, then between rows. The last column is repeated twice, the last row copied.
/// dst is 2 * width x 2 * height, all written. Writes nothing when a size is below 1.
MORVALE_API void resize_y_2x_up(const uint8_t* src, uint8_t* dst, int width, int height);

/// Enlarges a plane six times in each direction: weights 255:1, 213:43, 171:85, (a + b) >> 1, 85:171, 43:213,
/// each sum >> 8 with no rounding term. Edges and passes as in resize_y_4x_up: the last column is repeated
/// six times, rows 6 * j are not blended downwards, the last five rows copy row 6 * height - 6.
MORVALE_API void resize_y_6x_up(const uint8_t* src, uint8_t* dst, int width, int height);

/// Enlarges a plane `factor` times in each direction, factor 1..64 (nothing is written for any other). Output
/// k of a group is (wa * a + wb * b + 1) >> 8 with wb = 256 * k / factor and wa = 256 * (factor - k) /
/// factor, truncated; 255:1 for k = 0. (Where 256 is no multiple of the factor the weights sum to 255, so
/// flat areas may come out one lower.) Edges and passes as in resize_y_4x_up, which factor 4 equals.
MORVALE_API void resize_y(const uint8_t* src, uint8_t* dst, int width, int height, int factor);

/// Enlarges a region of a plane eight times, to the right (_hori) or downwards (_vert). The region is columns
/// x .. x + width - 1 and rows y .. y + height - 1 of src, whose rows are srcStride bytes apart. Only the
/// region is read; its last column (_hori) or row (_vert) is repeated eight times.
///   blend  (wa * a + wb * b) >> 8, weights 255:1, 224:32, 192:64, 160:96, 128:128, 96:160, 64:192, 32:224
///   dst    _hori: height rows of 8 * width bytes; _vert: 8 * height rows of width bytes,
///          dstStride bytes apart
/// To enlarge a region both ways, run _hori into a buffer of 8 * width x height, then
/// _vert(buffer, dst, 8 * width, 0, 0, 8 * width, height, 8 * width). Writes nothing when a size is below 1.
MORVALE_API void resize_y_8x_up_RR_hori(const uint8_t* src, uint8_t* dst, int srcStride, int x, int y,
                                        int width, int height, int dstStride);
MORVALE_API void resize_y_8x_up_RR_vert(const uint8_t* src, uint8_t* dst, int srcStride, int x, int y,
                                        int width, int height, int dstStride);
