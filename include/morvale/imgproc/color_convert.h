/// Colour conversion between the camera's 4:2:0 frames and 8-bit RGB, BGR or grey. Free functions over the
/// caller's buffers: no allocation, no state, no checks beyond those stated, any number of calls at once on
/// distinct buffers. Every function returns 0. The conversions from RGB and BGR need floating point that
/// rounds to nearest, as it does unless the calling thread was set otherwise.
///
/// NV21: a luma plane of width x height bytes, then (or at a pointer of its own) a chroma plane of rows of
/// `width` bytes, one V,U pair per 2 x 2 luma block. The pair of luma pixel (x, y) lies in chroma row y / 2
/// at bytes (x & ~1) and (x & ~1) + 1. NV12 is the same with U first. In and out buffers must not overlap.
///
/// YUV to RGB is full range, in Q14 fixed point, with U' = U - 128 and V' = V - 128:
///   16384 R = 16384 Y + 22458 V'
///   16384 G = 16384 Y - 11436 V' - 5532 U'
///   16384 B = 16384 Y + 28384 U'
/// (R = Y + 1.370705 V', G = Y - 0.698001 V' - 0.337633 U', B = Y + 1.732446 U'.) The sum becomes a byte in
/// one of two ways, and which one is part of each function's contract:
///   block rule  sum >> 14 (toward minus infinity), clamped to 0..255
///   pixel rule  0 if sum < -8192, else min((sum + 8192) >> 14, 255)
#pragma once

#include <cstdint>

#include <morvale/core/export.h>

/// NV21 to interleaved RGB, pixel rule throughout.
///   luma  width x height bytes, stride width
///   vu    (height + 1) / 2 rows, stride width; an odd width reads one byte past the last row
///   rgb   width x height pixels, stride 3 * width; all written, nothing beyond
/// Writes nothing when a size is below 1.
MORVALE_API int NV21toRGB(const uint8_t* luma, const uint8_t* vu, uint8_t* rgb, int width, int height);

/// NV21 (contiguous) to interleaved BGR, block rule throughout, in blocks of eight columns. A width that is
/// not a multiple of 8 makes the last block of each row run on: it reads luma and chroma and writes bgr up to
/// 7 pixels past the row. The next row then overwrites them, so what remains is up to 21 bytes behind the
/// last row: provide room for them, and 7 readable bytes behind each source plane.
///   nv21  luma stride width, then (height + 1) / 2 chroma rows, stride width
///   bgr   stride 3 * width
/// Writes nothing when a size is below 1.
MORVALE_API int NV21toBGR(const uint8_t* nv21, uint8_t* bgr, int width, int height);

/// The same into three planes of stride width: planes[0] = B, planes[1] = G, planes[2] = R. The last block of
/// the last row writes up to 7 bytes past the end of each plane.
MORVALE_API int NV21toBGR_planar(const uint8_t* nv21, uint8_t* const planes[3], int width, int height);

/// NV21 (contiguous) to interleaved RGB inside a wider image, with the margins filled by mirroring. This is
/// the step that makes the network input.
///   src  width x height NV21, strides width
///   dst  rows of outWidth pixels (3 * outWidth bytes)
/// outHeight is ignored.
///
/// 1. Rows 0 .. (height & ~1) - 1, in order. Columns below (width & ~7) follow the block rule, those up to
///    (width & ~1) the pixel rule; so neighbouring pixels of one flat area may differ by one. An odd last
///    column copies the column before it. A picture narrower than 2 columns is not converted.
/// 2. Right margin, in each of these rows: column c receives column 2 * width - 1 - c. With
///    E = width + rightMargin and E8 = E & ~7: if E8 > width, whole blocks of eight columns are written from
///    column `width` on for as long as a block begins below E8, so the last one may run up to 7 columns past
///    E8, and past E; then the columns E8 .. E - 1 are written one by one, upwards, also where E8 is below
///    the width (they then overwrite picture columns, possibly from columns already overwritten).
///    Columns past outWidth fall on the next row, which is converted afterwards: provide room for 7 pixels
///    behind the last row.
///    A negative margin is legal: E is then below the width and the same steps rewrite columns E8 .. E - 1,
///    which lie before the row when E8 is negative, and read up to column 2 * width - 1 - E8. The caller
///    provides that room.
/// 3. An odd height: row height - 1 becomes a copy of row (height & ~1) - 1, the whole 3 * outWidth bytes
///    (the row before the image when height is 1).
/// 4. Bottom margin: row height + k becomes a copy of row height - 1 - k, k = 0 .. bottomMargin - 1.
/// A positive right margin must not exceed the width, the bottom margin not the height. Nothing else is
/// written. What is read besides the picture: blocks that end past column 2 * width - 1 (width 12 with margin
/// 12) mirror up to 7 columns from before the row, and where E8 lies below the width (width 12 with margin 3)
/// the single columns mirror up to 7 columns from behind it. Provide that room before the first and behind
/// the last row.
MORVALE_API int NV21toRGB_pad(const uint8_t* src, uint8_t* dst, int width, int height, int outWidth,
                              int outHeight, int rightMargin, int bottomMargin);

/// As NV21toRGB_pad, channels in the order B, G, R.
MORVALE_API int NV21toBGR_pad(const uint8_t* src, uint8_t* dst, int width, int height, int outWidth,
                              int outHeight, int rightMargin, int bottomMargin);

/// As NV21toRGB_pad from NV12: U comes first in each chroma pair.
MORVALE_API int NV12toRGB_pad(const uint8_t* src, uint8_t* dst, int width, int height, int outWidth,
                              int outHeight, int rightMargin, int bottomMargin);

/// As NV21toRGB_pad into three planes B, G, R of outWidth x outHeight bytes, one behind the other, with one
/// difference in step 2: of the columns E8 .. E - 1 only every eighth, beginning with E8, is written. The
/// others keep what they held. Each row is converted in all three planes before the next one, then the row
/// copies follow: where a plane's overrun falls on the next plane, this order decides.
MORVALE_API int NV21toBGR_pad_lsi(const uint8_t* src, uint8_t* dst, int width, int height, int outWidth,
                                  int outHeight, int rightMargin, int bottomMargin);

/// Interleaved RGB to NV21 with two destination pointers (full-range BT.601, the coefficients of JPEG /
/// JFIF).
///   rgb   stride 3 * width
///   luma  stride width; Y = trunc(min(0.299 R + 0.587 G + 0.114 B, 255)) in float32
///   vu    stride width, (height + 1) / 2 rows; sampled from the top-left pixel of each 2 x 2 block, no
///         averaging: Cb = -0.168736 R - 0.331264 G + 0.5 B, Cr = 0.5 R - 0.418688 G - 0.081312 B in double,
///         narrowed to float, rounded half away from zero, plus 128, 128 itself clamped to 255. V at byte x,
///         U at byte x + 1: an odd width puts the last U on the first byte of the next row, where the next V
///         overwrites it; behind the last row one byte is written.
/// Writes nothing when a size is below 1.
MORVALE_API int RGBtoNV21(const uint8_t* rgb, uint8_t* luma, uint8_t* vu, int width, int height);

/// The same from BGR into one contiguous NV21 image.
MORVALE_API int BGRtoNV21(const uint8_t* bgr, uint8_t* nv21, int width, int height);

/// Interleaved BGR to grey: (4732 B + 46871 G + 13933 R) >> 16, the BT.709 luma weights in Q16, truncated.
/// bgr has stride 3 * width, grey stride width. Writes nothing when a size is below 1.
MORVALE_API int BGR2GRAY(const uint8_t* bgr, uint8_t* grey, int width, int height);
