#include <morvale/imgproc/color_convert.h>

#include <algorithm>
#include <cstddef>

#include "imgproc/color_image.h"
#include "kernels/kernel_set.h"

namespace morvale {
namespace {

struct Nv21Rows {
  const uint8_t* luma_plane;
  const uint8_t* chroma_plane;
  ptrdiff_t width;

  const uint8_t* luma(int row) const { return luma_plane + row * width; }
  const uint8_t* chroma(int row) const { return chroma_plane + (row / 2) * width; }
};

Nv21Rows contiguous(const uint8_t* image, int width, int height) {
  return {image, image + static_cast<ptrdiff_t>(width) * height, width};
}

template <YuvFormat kFormat, YuvRounding kRounding, class Image>
void decode(const Nv21Rows& src, const Image& dst, int row, int count, int first, int columns) {
  const YuvRows from = {src.luma(row) + first, src.width, src.chroma(row) + first, src.width, count};
  kernels().color.decode[kFormat][kRounding](from, dst.from(row, first), columns);
}

/// Whole blocks of eight run past a width that is no multiple of 8. The next row overwrites what they leave
/// there, so only the last one is written in full.
template <YuvFormat kFormat, class Image>
void decode_blocks(const Nv21Rows& src, const Image& dst, int width, int height) {
  decode<kFormat, kTruncate>(src, dst, 0, height, 0, width);
  if (width & 7) decode<kFormat, kTruncate>(src, dst, height - 1, 1, width & ~7, 8);
}

/// Rows of the padded converters, without their margins. A picture narrower than two columns has
/// no pair to convert and no column to repeat.
template <YuvFormat kFormat, class Image>
void decode_padded(const Nv21Rows& src, const Image& dst, int row, int count, int width) {
  const int blocks_end = width & ~7;
  const int pairs_end = width & ~1;
  if (pairs_end < 2) return;
  decode<kFormat, kTruncate>(src, dst, row, count, 0, blocks_end);
  if (pairs_end > blocks_end) {
    decode<kFormat, kRound>(src, dst, row, count, blocks_end, pairs_end - blocks_end);
  }
  if (width & 1) {
    for (int k = 0; k < count; ++k) dst.copy_column(row + k, width - 1, width - 2);
  }
}

/// Fills the columns right of the picture by mirroring: blocks of eight for as long as one begins below the
/// last multiple of eight, then the columns behind that multiple, `tail_step` apart. The blocks may overrun
/// the margin, and with a negative margin the columns lie inside or left of the picture; both are relied
/// upon.
template <class Image>
void mirror_right(const Image& dst, int row, int width, int margin, int tail_step) {
  const int end = width + margin;
  const int blocks_end = end & ~7;
  for (int block = width; block < blocks_end; block += 8) {
    for (int c = block; c < block + 8; ++c) dst.copy_column(row, c, 2 * width - 1 - c);
  }
  for (int c = blocks_end; c < end; c += tail_step) dst.copy_column(row, c, 2 * width - 1 - c);
}

/// Whether no row reaches the one below, which is converted after it: what it writes there is lost, and what
/// it reads there is still the old. Only such rows may be converted together, before any margin.
bool rows_stay_apart(int width, int margin, int out_width) {
  const int end = width + margin;
  const int blocks_end = end & ~7;
  const int margin_end = blocks_end > width ? width + ((blocks_end - width + 7) & ~7) : width;
  const int read_end = end > blocks_end ? 2 * width - blocks_end : width;
  return std::max({margin_end, end, read_end}) <= out_width;
}

/// The road of all padded converters. They differ in format, in the image they fill, and in the step of the
/// right margin's last columns.
template <YuvFormat kFormat, class Image>
int convert_padded(const uint8_t* src, const Image& dst, int width, int height, int right_margin,
                   int bottom_margin, int tail_step = 1) {
  const Nv21Rows rows = contiguous(src, width, height);
  const int even_height = height & ~1;
  const int step = rows_stay_apart(width, right_margin, dst.width()) ? even_height : 1;
  for (int row = 0; row < even_height; row += step) {
    decode_padded<kFormat>(rows, dst, row, step, width);
    for (int k = 0; k < step; ++k) mirror_right(dst, row + k, width, right_margin, tail_step);
  }
  if (height & 1) dst.copy_row(height - 1, even_height - 1);
  for (int k = 0; k < bottom_margin; ++k) dst.copy_row(height + k, height - 1 - k);
  return 0;
}

int to_nv21(ColorRows::Encode encode, const uint8_t* pixels, uint8_t* luma, uint8_t* vu, int width,
            int height) {
  if (width < 1 || height < 1) return 0;
  const ptrdiff_t stride = width;
  for (int y = 0; y < height; ++y) {
    // Chroma is the top-left pixel's, not the block's mean.
    uint8_t* const pairs = y & 1 ? nullptr : vu + (y / 2) * stride;
    encode(pixels + 3 * stride * y, luma + stride * y, pairs, stride);
  }
  return 0;
}

}  // namespace
}  // namespace morvale

using namespace morvale;

int NV21toRGB(const uint8_t* luma, const uint8_t* vu, uint8_t* rgb, int width, int height) {
  if (width < 1 || height < 1) return 0;
  decode<kVuToRgb, kRound>(Nv21Rows{luma, vu, width}, PixelImage(rgb, width, height), 0, height, 0, width);
  return 0;
}

int NV21toBGR(const uint8_t* nv21, uint8_t* bgr, int width, int height) {
  if (width < 1 || height < 1) return 0;
  decode_blocks<kVuToBgr>(contiguous(nv21, width, height), PixelImage(bgr, width, height), width, height);
  return 0;
}

int NV21toBGR_planar(const uint8_t* nv21, uint8_t* const planes[3], int width, int height) {
  if (width < 1 || height < 1) return 0;
  const PlanarBgrImage dst(planes[0], planes[1], planes[2], width);
  decode_blocks<kVuToBgrPlanes>(contiguous(nv21, width, height), dst, width, height);
  return 0;
}

int NV21toRGB_pad(const uint8_t* src, uint8_t* dst, int width, int height, int outWidth, int /*outHeight*/,
                  int rightMargin, int bottomMargin) {
  const PixelImage image(dst, outWidth, height);
  return convert_padded<kVuToRgb>(src, image, width, height, rightMargin, bottomMargin);
}

int NV21toBGR_pad(const uint8_t* src, uint8_t* dst, int width, int height, int outWidth, int /*outHeight*/,
                  int rightMargin, int bottomMargin) {
  const PixelImage image(dst, outWidth, height);
  return convert_padded<kVuToBgr>(src, image, width, height, rightMargin, bottomMargin);
}

int NV12toRGB_pad(const uint8_t* src, uint8_t* dst, int width, int height, int outWidth, int /*outHeight*/,
                  int rightMargin, int bottomMargin) {
  const PixelImage image(dst, outWidth, height);
  return convert_padded<kUvToRgb>(src, image, width, height, rightMargin, bottomMargin);
}

int NV21toBGR_pad_lsi(const uint8_t* src, uint8_t* dst, int width, int height, int outWidth, int outHeight,
                      int rightMargin, int bottomMargin) {
  const ptrdiff_t plane = static_cast<ptrdiff_t>(outWidth) * outHeight;
  const PlanarBgrImage planes(dst, dst + plane, dst + 2 * plane, outWidth);
  // Of the margin's last columns only every eighth is written: the gap is part of the output.
  constexpr int kTailStep = 8;
  return convert_padded<kVuToBgrPlanes>(src, planes, width, height, rightMargin, bottomMargin, kTailStep);
}

int RGBtoNV21(const uint8_t* rgb, uint8_t* luma, uint8_t* vu, int width, int height) {
  return to_nv21(kernels().color.rgb_to_nv21, rgb, luma, vu, width, height);
}

int BGRtoNV21(const uint8_t* bgr, uint8_t* nv21, int width, int height) {
  return to_nv21(kernels().color.bgr_to_nv21, bgr, nv21, nv21 + static_cast<ptrdiff_t>(width) * height, width,
                 height);
}

int BGR2GRAY(const uint8_t* bgr, uint8_t* grey, int width, int height) {
  if (width < 1 || height < 1) return 0;
  kernels().color.bgr_to_grey(bgr, grey, static_cast<ptrdiff_t>(width) * height);
  return 0;
}
