/// Quarter and half turns of a plane or an NV21 image (layout: color_convert.h). Free functions over the
/// caller's buffers: no allocation, no state. Rows are packed. Source and destination must not overlap.
/// Nothing is written when a size is below 1.
///
/// mode is no angle: 0 and 2 are quarter turns, every other value is the third mapping of the function, and
/// the mappings differ between functions on purpose. A quarter turn's destination is height x width. S(x, y)
/// is the source pixel in column x of row y, D(c, r) the destination's in column c of row r, W = width, H =
/// height.
#pragma once

#include <cstdint>

#include <morvale/core/export.h>

/// mode 0  D(H-1-y, W-1-x) = S(x, y): a quarter turn clockwise and a top-to-bottom mirror
/// mode 2  D(y, W-1-x) = S(x, y): a quarter turn counter-clockwise
/// other   D(x, H-1-y) = S(x, y): a top-to-bottom mirror, not a half turn
MORVALE_API void rotate_y(const uint8_t* src, uint8_t* dst, int width, int height, int mode);

/// Modes 0 and 2 as rotate_y. Any other mode is a half turn, D(W-1-x, H-1-y) = S(x, y), and first writes the
/// line "roatetasdf asd 180....................................................." to standard output,
/// also for an empty plane.
MORVALE_API void rotate_y_opt(const uint8_t* src, uint8_t* dst, int width, int height, int mode);

/// mode 0  D(H-1-y, x) = S(x, y): a quarter turn clockwise
/// mode 2  D(y, W-1-x) = S(x, y): a quarter turn counter-clockwise
/// other   D(W-1-x, H-1-y) = S(x, y): a half turn
/// Every luma pixel, row by row, also copies its V,U pair (chroma row y / 2, bytes x & ~1 and the next) to
/// the pair of its destination: mode 0 chroma row x / 2, byte (H-1-y) & ~1; mode 2 chroma row (W-1-x) / 2,
/// byte y & ~1; other modes chroma row (H-1-y) / 2, byte (W-1-x) & ~1. With even sizes each pair is so
/// written four times with one value. With odd sizes the later copy wins, the pairs of an odd last column
/// reach one byte into the next chroma row (behind the last row: one byte past it), and both images need
/// (rows + 1) / 2 chroma rows.
MORVALE_API void rotate_NV21(const uint8_t* src, uint8_t* dst, int width, int height, int mode);

/// The same mapping as rotate_NV21 in every mode.
MORVALE_API void rotate_NV21_opt(const uint8_t* src, uint8_t* dst, int width, int height, int mode);
