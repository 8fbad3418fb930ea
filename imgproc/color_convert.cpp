#include "imgproc/color_convert.h"

#include <algorithm>
#include <cstddef>

#include "imgproc/color_image.h"
#include "imgproc/nv21_sample.h"

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

/// Converts whole rows by the block rule. The last block of a row runs past a width that is no multiple of 8.
template <class Image>
void convert_blocks(const Nv21Rows& src, const Image& dst, int width, int height) {
  for (int row = 0; row < height; ++row) {
    const uint8_t* luma = src.luma(row);
    const uint8_t* chroma = src.chroma(row);
    for (int x = 0; x < width; x += 8) {
      for (int i = x; i < x + 8; ++i) {
        dst.put(row, i, block_rule(rgb_sums<VuOrder>(luma[i], chroma + (i & ~1))));
      }
    }
  }
}

/// One row of the padded converters, without its margin. A picture narrower than two columns has no pair to
/// convert and no column to repeat.
template <class Order, class Image>
void convert_row(const uint8_t* luma, const uint8_t* chroma, const Image& dst, int row, int width) {
  const int blocks_end = width & ~7;
  const int pairs_end = width & ~1;
  if (pairs_end < 2) return;
  int x = 0;
  for (; x < blocks_end; ++x) dst.put(row, x, block_rule(rgb_sums<Order>(luma[x], chroma + (x & ~1))));
  for (; x < pairs_end; ++x) dst.put(row, x, pixel_rule(rgb_sums<Order>(luma[x], chroma + (x & ~1))));
  if (width & 1) dst.copy_column(row, width - 1, width - 2);
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

/// The road of all padded converters. They differ in chroma order, in the image they fill, and in the step of
/// the right margin's last columns.
template <class Order, class Image>
int convert_padded(const uint8_t* src, const Image& dst, int width, int height, int right_margin,
                   int bottom_margin, int tail_step = 1) {
  const Nv21Rows rows = contiguous(src, width, height);
  const int even_height = height & ~1;
  for (int row = 0; row < even_height; ++row) {
    convert_row<Order>(rows.luma(row), rows.chroma(row), dst, row, width);
    mirror_right(dst, row, width, right_margin, tail_step);
  }
  if (height & 1) dst.copy_row(height - 1, even_height - 1);
  for (int k = 0; k < bottom_margin; ++k) dst.copy_row(height + k, height - 1 - k);
  return 0;
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
int to_nv21(const uint8_t* pixels, uint8_t* luma, uint8_t* vu, int width, int height) {
  if (width < 1 || height < 1) return 0;
  const ptrdiff_t stride = width;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const uint8_t* p = pixels + 3 * (y * stride + x);
      const int r = p[kRed], g = p[1], b = p[kBlue];
      luma[y * stride + x] = luma_byte(r, g, b);
      if ((x | y) & 1) continue;  // chroma is the top-left pixel's, not the block's mean
      uint8_t* pair = vu + (y / 2) * stride + x;
      pair[0] = chroma_byte(0.5 * r - 0.418688 * g - 0.081312 * b);
      pair[1] = chroma_byte(-0.168736 * r - 0.331264 * g + 0.5 * b);
    }
  }
  return 0;
}

}  // namespace
}  // namespace morvale

using namespace morvale;

int NV21toRGB(const uint8_t* luma, const uint8_t* vu, uint8_t* rgb, int width, int height) {
  if (width < 1 || height < 1) return 0;
  const Nv21Rows rows{luma, vu, width};
  const RgbImage dst(rgb, width);
  for (int y = 0; y < height; ++y) {
    const uint8_t* chroma = rows.chroma(y);
    for (int x = 0; x < width; ++x) {
      dst.put(y, x, pixel_rule(rgb_sums<VuOrder>(rows.luma(y)[x], chroma + (x & ~1))));
    }
  }
  return 0;
}

int NV21toBGR(const uint8_t* nv21, uint8_t* bgr, int width, int height) {
  if (width < 1 || height < 1) return 0;
  convert_blocks(contiguous(nv21, width, height), BgrImage(bgr, width), width, height);
  return 0;
}

int NV21toBGR_planar(const uint8_t* nv21, uint8_t* const planes[3], int width, int height) {
  if (width < 1 || height < 1) return 0;
  const PlanarBgrImage dst(planes[0], planes[1], planes[2], width);
  convert_blocks(contiguous(nv21, width, height), dst, width, height);
  return 0;
}

int NV21toRGB_pad(const uint8_t* src, uint8_t* dst, int width, int height, int outWidth, int /*outHeight*/,
                  int rightMargin, int bottomMargin) {
  return convert_padded<VuOrder>(src, RgbImage(dst, outWidth), width, height, rightMargin, bottomMargin);
}

int NV21toBGR_pad(const uint8_t* src, uint8_t* dst, int width, int height, int outWidth, int /*outHeight*/,
                  int rightMargin, int bottomMargin) {
  return convert_padded<VuOrder>(src, BgrImage(dst, outWidth), width, height, rightMargin, bottomMargin);
}

int NV12toRGB_pad(const uint8_t* src, uint8_t* dst, int width, int height, int outWidth, int /*outHeight*/,
                  int rightMargin, int bottomMargin) {
  return convert_padded<UvOrder>(src, RgbImage(dst, outWidth), width, height, rightMargin, bottomMargin);
}

int NV21toBGR_pad_lsi(const uint8_t* src, uint8_t* dst, int width, int height, int outWidth, int outHeight,
                      int rightMargin, int bottomMargin) {
  const ptrdiff_t plane = static_cast<ptrdiff_t>(outWidth) * outHeight;
  const PlanarBgrImage planes(dst, dst + plane, dst + 2 * plane, outWidth);
  // Of the margin's last columns only every eighth is written: the gap is part of the output.
  constexpr int kTailStep = 8;
  return convert_padded<VuOrder>(src, planes, width, height, rightMargin, bottomMargin, kTailStep);
}

int RGBtoNV21(const uint8_t* rgb, uint8_t* luma, uint8_t* vu, int width, int height) {
  return to_nv21<0, 2>(rgb, luma, vu, width, height);
}

int BGRtoNV21(const uint8_t* bgr, uint8_t* nv21, int width, int height) {
  return to_nv21<2, 0>(bgr, nv21, nv21 + static_cast<ptrdiff_t>(width) * height, width, height);
}

int BGR2GRAY(const uint8_t* bgr, uint8_t* grey, int width, int height) {
  if (width < 1 || height < 1) return 0;
  const ptrdiff_t pixels = static_cast<ptrdiff_t>(width) * height;
  for (ptrdiff_t i = 0; i < pixels; ++i) {
    const uint8_t* p = bgr + 3 * i;
    grey[i] = static_cast<uint8_t>((4732 * p[0] + 46871 * p[1] + 13933 * p[2]) >> 16);
  }
  return 0;
}
