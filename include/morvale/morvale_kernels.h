/// The image kernels under C names: libmorvale_kernels.so, for programs in C11 or C++ and for whatever else
/// can load a shared object and call C. They are the capture library's kernels, byte for byte, each behind a
/// check of its buffers. The library needs the C and C++ libraries alone, allocates nothing, throws nothing
/// and keeps no state: any number of threads may call it at once on distinct buffers.
///
/// A function is called morvale_ and the name of the C++ kernel, whose header in morvale/imgproc/ (of HSV
/// morvale/analysis/hsv.h) has the whole rule, down to the bit. What holds for all of them:
///
/// Pictures have 8 bits a sample, the top row first, rows packed. NV21 is a plane of luma, then (height + 1)
/// / 2 rows of `width` bytes of V,U pairs, one for each 2 x 2 pixels; NV12 has U first. Conversions from YUV
/// are full range.
///
/// Buffers come as a pointer and a size in bytes. A size must be at least the reach of the kernel: the bytes
/// up to and with the last one that it reads or writes, which may be less than the picture or lie behind it.
/// Each function gives its reaches, in bytes, with w and h for width and height, with divisions that
/// truncate, and with these (each 0 if w or h is 0):
///   pixels    w h
///   chroma    ((h + 1) / 2 - 1) w + w rounded up to an even number
///   nv21      pixels + chroma
///   blocks    (h - 1) w + w rounded up to a multiple of 8
/// A null pointer is a buffer of no bytes. Source and destination must not overlap, and floats and 16-bit
/// weights must be aligned: neither is checked.
///
/// Sizes of 0 are legal, and nothing is written for them. Sizes, strides and places that are negative or not
/// below 2^25 (2^23 where a picture is scaled to any size) are MORVALE_BAD_SIZE. Floating point must round to
/// nearest, as it does unless the calling thread was set otherwise.
#ifndef MORVALE_KERNELS_H
#define MORVALE_KERNELS_H

#include <stddef.h>
#include <stdint.h>

#include <morvale/core/export.h>

/// The version that this header belongs to.
#define MORVALE_KERNELS_VERSION "1.0.0"

#ifdef __cplusplus
extern "C" {
#endif

/// What became of a call. Unless it is MORVALE_OK nothing was written.
typedef enum morvale_status {
  MORVALE_OK = 0,                    ///< The kernel has run, if there was anything for it to do.
  MORVALE_BAD_SIZE = 1,              ///< A size or another argument that the kernel is not made for.
  MORVALE_SOURCE_TOO_SMALL = 2,      ///< A source, a grid or a table of weights does not reach far enough.
  MORVALE_DESTINATION_TOO_SMALL = 3  ///< A destination does not reach far enough.
} morvale_status;

/// One sentence for a person, also for a number that is no status. Static: never freed.
MORVALE_API const char* morvale_status_text(int status);

/// The version of the library that was loaded, as in MORVALE_KERNELS_VERSION. Static.
MORVALE_API const char* morvale_kernels_version(void);

/// The set of kernels in use: "portable", "avx2", "avx512" or "neon". All sets give the same bytes. It was
/// chosen when the library was loaded: the best that the processor can run, or where the build listens to it
/// the one that the environment variable MORVALE_KERNELS names. Static.
MORVALE_API const char* morvale_kernels_set(void);

// ---- Colour ----

/// NV21 with the planes apart to interleaved RGB, every pixel rounded.
///   luma pixels, vu chroma, rgb 3 pixels
MORVALE_API morvale_status morvale_NV21toRGB(const uint8_t* luma, size_t luma_bytes, const uint8_t* vu,
                                             size_t vu_bytes, uint8_t* rgb, size_t rgb_bytes, int width,
                                             int height);

/// NV21 to interleaved BGR, truncated, in whole blocks of eight columns: where the width is no multiple of 8,
/// up to 7 pixels behind the last row are written.
///   nv21 pixels + ((h + 1) / 2 - 1) w + w rounded up to a multiple of 8, bgr 3 blocks
MORVALE_API morvale_status morvale_NV21toBGR(const uint8_t* nv21, size_t nv21_bytes, uint8_t* bgr,
                                             size_t bgr_bytes, int width, int height);

/// The same into three planes of `blocks` bytes each.
MORVALE_API morvale_status morvale_NV21toBGR_planar(const uint8_t* nv21, size_t nv21_bytes, uint8_t* blue,
                                                    size_t blue_bytes, uint8_t* green, size_t green_bytes,
                                                    uint8_t* red, size_t red_bytes, int width, int height);

/// NV21 to interleaved RGB inside a picture outWidth pixels wide, with margins that mirror the picture to the
/// right and downwards; outHeight is ignored. Whole blocks of eight columns are truncated, the other pixels
/// rounded. With E = w + rightMargin and E8 = E rounded down to a multiple of 8:
///   src  pixels + (h / 2 - 1) w + (w rounded down to an even number); pixels alone if h or w is below 2
///   dst  3 ((R - 1) outWidth + C), where R is h rounded down to an even number and C the largest of:
///        w, unless below 2; the end of the last block of eight that begins below E8 (they begin at w);
///        E; if E8 < E, 2 w - E8. With an odd h or a bottom margin at least 3 (h + bottomMargin) outWidth
/// MORVALE_BAD_SIZE for a right margin above w, a bottom margin above h, a height of 1, and margins whose
/// last block mirrors or whose end writes columns left of the picture (w 12 and rightMargin 12). A negative
/// right margin overwrites the columns E8 to E - 1; a negative bottom margin is none.
MORVALE_API morvale_status morvale_NV21toRGB_pad(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                                 size_t dst_bytes, int width, int height, int outWidth,
                                                 int outHeight, int rightMargin, int bottomMargin);

/// As morvale_NV21toRGB_pad, blue first.
MORVALE_API morvale_status morvale_NV21toBGR_pad(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                                 size_t dst_bytes, int width, int height, int outWidth,
                                                 int outHeight, int rightMargin, int bottomMargin);

/// As morvale_NV21toRGB_pad, from NV12.
MORVALE_API morvale_status morvale_NV12toRGB_pad(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                                 size_t dst_bytes, int width, int height, int outWidth,
                                                 int outHeight, int rightMargin, int bottomMargin);

/// As morvale_NV21toBGR_pad into three planes of outWidth x outHeight, one behind the other, with column E8
/// as the only one written of E8 to E - 1.
///   dst  2 outWidth outHeight, and what morvale_NV21toRGB_pad has with 1 for its 3
MORVALE_API morvale_status morvale_NV21toBGR_pad_lsi(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                                     size_t dst_bytes, int width, int height, int outWidth,
                                                     int outHeight, int rightMargin, int bottomMargin);

/// Interleaved RGB to NV21 with the planes apart: luma truncated, chroma of each block's top-left pixel.
///   rgb 3 pixels, luma pixels, vu chroma
MORVALE_API morvale_status morvale_RGBtoNV21(const uint8_t* rgb, size_t rgb_bytes, uint8_t* luma,
                                             size_t luma_bytes, uint8_t* vu, size_t vu_bytes, int width,
                                             int height);

/// The same from BGR into one buffer.
///   bgr 3 pixels, nv21 nv21
MORVALE_API morvale_status morvale_BGRtoNV21(const uint8_t* bgr, size_t bgr_bytes, uint8_t* nv21,
                                             size_t nv21_bytes, int width, int height);

/// Interleaved BGR to grey, BT.709 luma, truncated.
///   bgr 3 pixels, grey pixels
MORVALE_API morvale_status morvale_BGR2GRAY(const uint8_t* bgr, size_t bgr_bytes, uint8_t* grey,
                                            size_t grey_bytes, int width, int height);

/// Interleaved BGR to three floats a pixel, not rounded: hue 0 <= H < 360 in degrees, saturation and value
/// 0..255.
///   bgr 3 pixels, hsv 12 pixels
MORVALE_API morvale_status morvale_BGR2HSV(const uint8_t* bgr, size_t bgr_bytes, float* hsv, size_t hsv_bytes,
                                           int width, int height);

// ---- Scaling ----

/// NV21 to any size, sampled from the top-left corner: bilinear and truncated, or, where the ratios of both
/// directions end in a half (1.5, 2.5), the means of whole pixels. With the step s = 256 srcWidth / dstWidth,
/// column x of the result reads up to source column (x s + 255) / 256; by the half-ratio rule up to
/// x / 2 (2 (s / 256) + 1), for odd x s / 256 + 1 more. Rows likewise (the whole formula stands in
/// morvale/checked/resize.h).
///   luma  (last row read) srcWidth + the last column read + 1
///   vu    the same, of dstHeight / 2 rows of pairs of bytes; nothing if dstHeight is below 2
///   dst   dstWidth (dstHeight + dstHeight / 2); half-ratio rows come in twos: an odd number of chroma rows,
///         or the one row of a result without chroma, is followed by one more
/// MORVALE_BAD_SIZE for a picture from an empty source.
MORVALE_API morvale_status morvale_resize_NV21_opt(const uint8_t* luma, size_t luma_bytes, const uint8_t* vu,
                                                   size_t vu_bytes, uint8_t* dst, size_t dst_bytes,
                                                   int srcWidth, int srcHeight, int dstWidth, int dstHeight);

/// The same from one buffer.
///   src  the larger of luma's reach, and srcWidth srcHeight and vu's
MORVALE_API morvale_status morvale_resize_NV21(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                               size_t dst_bytes, int srcWidth, int srcHeight, int dstWidth,
                                               int dstHeight);

/// NV21 to twice the width and height, with rounded means between samples; the last ones are repeated.
///   src  pixels + (h / 2 - 1) w + (w rounded down to an even number); pixels alone if h or w is below 2
///   dst  4 pixels + 4 w (h / 2); 4 pixels if w is below 2
MORVALE_API morvale_status morvale_resize_NV21_2x_up(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                                     size_t dst_bytes, int width, int height);

/// NV21 to half the width and height, both truncated: every second sample, unfiltered.
///   src  pixels + (2 (h / 4) - 2) w + 4 (w / 4) - 2
///   dst  (w / 2) (h / 2) + (h / 4 - 1) (w / 2) + 2 (w / 4)
/// each without its chroma if w or h is below 4. Below 2 nothing is written, whatever the buffers.
MORVALE_API morvale_status morvale_resize_NV21_2x_down(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                                       size_t dst_bytes, int width, int height);

/// NV21 to a third of the width and height, both truncated: the rounded mean of 3 x 3 samples.
///   src  pixels + (3 (h / 6) - 1) w + 6 (w / 6)
///   dst  (w / 3) (h / 3) + (h / 6 - 1) (w / 3) + 2 (w / 6)
/// each without its chroma if w or h is below 6. Below 3 nothing is written, whatever the buffers.
MORVALE_API morvale_status morvale_resize_NV21_3x_down(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                                       size_t dst_bytes, int width, int height);

/// A plane to any size, as the luma of morvale_resize_NV21_opt.
///   src  as luma there
///   dst  dstWidth dstHeight; half-ratio rows come in twos
MORVALE_API morvale_status morvale_resize_Y_1(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                              size_t dst_bytes, int srcWidth, int srcHeight, int dstWidth,
                                              int dstHeight);

/// A plane to twice the width and height, with rounded means between samples; the last ones are repeated.
///   src pixels, dst 4 pixels
MORVALE_API morvale_status morvale_resize_y_2x_up(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                                  size_t dst_bytes, int width, int height);

/// A plane to four times the width and height; the first of four columns is a 255:1 blend, not a copy.
///   src pixels, dst 16 pixels
MORVALE_API morvale_status morvale_resize_y_4x_up(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                                  size_t dst_bytes, int width, int height);

/// A plane to six times the width and height, blended likewise, truncated.
///   src pixels, dst 36 pixels
MORVALE_API morvale_status morvale_resize_y_6x_up(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                                  size_t dst_bytes, int width, int height);

/// A plane to `factor` times the width and height. MORVALE_BAD_SIZE for a factor outside 1..64.
///   src pixels, dst factor factor pixels
MORVALE_API morvale_status morvale_resize_y(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                            size_t dst_bytes, int width, int height, int factor);

/// The columns x .. x + width - 1 of the rows y .. y + height - 1 of a plane, whose rows are srcStride bytes
/// apart, to eight times the width; the result's rows are dstStride bytes apart. MORVALE_BAD_SIZE for a
/// region that leaves its rows, and for a dstStride below 8 w.
///   src (y + h - 1) srcStride + x + w, dst (h - 1) dstStride + 8 w
MORVALE_API morvale_status morvale_resize_y_8x_up_RR_hori(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                                          size_t dst_bytes, int srcStride, int x, int y,
                                                          int width, int height, int dstStride);

/// The same to eight times the height; dstStride at least w.
///   src (y + h - 1) srcStride + x + w, dst (8 h - 1) dstStride + w
MORVALE_API morvale_status morvale_resize_y_8x_up_RR_vert(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                                          size_t dst_bytes, int srcStride, int x, int y,
                                                          int width, int height, int dstStride);

// ---- Turning ----
// A mode is no angle: 0 and 2 are quarter turns, whose result is h wide and w high, every other number is the
// function's third mapping.

/// A plane: mode 0 clockwise and mirrored top to bottom, 2 counter-clockwise, else mirrored top to bottom.
///   src and dst pixels
MORVALE_API morvale_status morvale_rotate_y(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                            size_t dst_bytes, int width, int height, int mode);

/// As morvale_rotate_y, but any other mode is a half turn and first writes a line to standard output.
MORVALE_API morvale_status morvale_rotate_y_opt(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                                size_t dst_bytes, int width, int height, int mode);

/// NV21: mode 0 clockwise, 2 counter-clockwise, else a half turn.
///   src nv21, dst nv21 of the turned picture
MORVALE_API morvale_status morvale_rotate_NV21(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                               size_t dst_bytes, int width, int height, int mode);

/// As morvale_rotate_NV21 in every mode.
MORVALE_API morvale_status morvale_rotate_NV21_opt(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                                   size_t dst_bytes, int width, int height, int mode);

// ---- Blur ----

/// The weights of a Gaussian of standard deviation `sigma` pixels, in fixed point with `bits` bits, 8 or 14;
/// their sum is 1 << bits. MORVALE_BAD_SIZE for a radius outside 0..127 or other bits.
///   weights 2 (2 radius + 1)
MORVALE_API morvale_status morvale_GFilterCreation(float sigma, int radius, int bits, uint16_t* weights,
                                                   size_t weights_bytes);

/// One pass of the blur along rows, in the cells of 8 x 8 pixels that `grid` marks with a byte other than 0;
/// the grid's rows are 600 bytes apart, whatever the picture's width. The rest is copied. MORVALE_BAD_SIZE
/// for a width above 4800 and for what morvale_GFilterCreation refuses.
///   src and dst pixels, grid ((h + 7) / 8 - 1) 600 + (w + 7) / 8, weights 2 (2 radius + 1)
MORVALE_API morvale_status morvale_GaussianBlur_Grid_Hori(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                                          size_t dst_bytes, const uint8_t* grid,
                                                          size_t grid_bytes, int width, int height,
                                                          const uint16_t* weights, size_t weights_bytes,
                                                          int radius, int bits);

/// The same along columns.
MORVALE_API morvale_status morvale_GaussianBlur_Grid_Vert(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                                          size_t dst_bytes, const uint8_t* grid,
                                                          size_t grid_bytes, int width, int height,
                                                          const uint16_t* weights, size_t weights_bytes,
                                                          int radius, int bits);

#ifdef __cplusplus
}
#endif

#endif
