/// Colour conversion behind size checks (checked.h): the kernels of imgproc/color_convert.h and
/// analysis/hsv.h.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>

#include <morvale/analysis/hsv.h>
#include <morvale/checked/reach.h>
#include <morvale/imgproc/color_convert.h>

namespace morvale::checked {

/// luma w h, vu ((h + 1) / 2 - 1) w + evenUp(w), rgb 3 w h.
[[nodiscard]] inline Status NV21toRGB(std::span<const uint8_t> luma, std::span<const uint8_t> vu,
                                      std::span<uint8_t> rgb, int width, int height) {
  if (!detail::within({width, height})) return Status::kBadSize;
  const int64_t pixels = detail::luma_bytes(width, height);
  if (!detail::holds(vu, detail::chroma_reach(width, height))) return Status::kSourceTooSmall;
  return detail::run(luma, pixels, rgb, 3 * pixels,
                     [&](const uint8_t* y, uint8_t* out) { ::NV21toRGB(y, vu.data(), out, width, height); });
}

namespace detail {

/// Rows converted in whole blocks of eight columns: what the last block takes beyond the last row.
constexpr int64_t block_pixels(int64_t width, int64_t height) {
  return rows_reach(height, width, eight_up(width));
}
constexpr int64_t block_source_reach(int64_t width, int64_t height) {
  return luma_bytes(width, height) + block_pixels(width, (height + 1) / 2);
}

}  // namespace detail

/// nv21 w h + ((h + 1) / 2 - 1) w + eightUp(w), bgr 3 ((h - 1) w + eightUp(w)).
[[nodiscard]] inline Status NV21toBGR(std::span<const uint8_t> nv21, std::span<uint8_t> bgr, int width,
                                      int height) {
  if (!detail::within({width, height})) return Status::kBadSize;
  return detail::run(nv21, detail::block_source_reach(width, height), bgr,
                     3 * detail::block_pixels(width, height), ::NV21toBGR, width, height);
}

/// nv21 as NV21toBGR, each plane (h - 1) w + eightUp(w).
[[nodiscard]] inline Status NV21toBGR_planar(std::span<const uint8_t> nv21,
                                             std::array<std::span<uint8_t>, 3> planes, int width,
                                             int height) {
  if (!detail::within({width, height})) return Status::kBadSize;
  if (!detail::holds(nv21, detail::block_source_reach(width, height))) return Status::kSourceTooSmall;
  for (const std::span<uint8_t> plane : planes) {
    if (!detail::holds(plane, detail::block_pixels(width, height))) return Status::kDestinationTooSmall;
  }
  uint8_t* const starts[3] = {planes[0].data(), planes[1].data(), planes[2].data()};
  ::NV21toBGR_planar(nv21.data(), starts, width, height);
  return Status::kOk;
}

namespace detail {

struct Columns {
  int64_t begin, end;
};

/// The columns of a converted row that a padded converter touches, with those that it mirrors from: the
/// picture, the blocks of eight behind it, and the columns between the margin's last multiple of eight and
/// its end, `tail_step` apart.
constexpr Columns padded_columns(int64_t width, int64_t right_margin, int64_t tail_step) {
  Columns touched{0, width < 2 ? 0 : width};
  const auto mirror = [&](int64_t begin, int64_t end) {
    if (begin >= end) return;
    touched.begin = std::min({touched.begin, begin, 2 * width - end});
    touched.end = std::max({touched.end, end, 2 * width - begin});
  };
  const int64_t end = width + right_margin;
  const int64_t blocks_end = end & ~int64_t{7};
  if (blocks_end > width) mirror(width, width + eight_up(blocks_end - width));
  if (blocks_end < end) mirror(blocks_end, blocks_end + (end - 1 - blocks_end) / tail_step * tail_step + 1);
  return touched;
}

/// The pixels that a padded converter reaches in its destination, or -1 if it would touch some before it.
constexpr int64_t padded_pixels(int64_t width, int64_t height, int64_t out_width, int64_t right_margin,
                                int64_t bottom_margin, int64_t tail_step) {
  const int64_t even_height = height / 2 * 2;
  int64_t reach = 0;
  if (even_height > 0) {
    const Columns touched = padded_columns(width, right_margin, tail_step);
    if (touched.begin < 0) return -1;
    reach = rows_reach(even_height, out_width, touched.end);
  }
  if (height == 1 && out_width > 0) return -1;  // its only row would be a copy of the one above
  const bool copies_rows = height % 2 == 1 || bottom_margin > 0;
  return copies_rows ? std::max(reach, (height + std::max<int64_t>(bottom_margin, 0)) * out_width) : reach;
}

constexpr int64_t padded_source_reach(int64_t width, int64_t height) {
  return luma_bytes(width, height) + rows_reach(height / 2, width, width / 2 * 2);
}

constexpr bool padded_sizes_ok(int width, int height, int out_width, int right_margin, int bottom_margin) {
  return within({width, height, out_width}) && right_margin > -kSizeEnd && right_margin <= width &&
         bottom_margin > -kSizeEnd && bottom_margin <= height;
}

using PadKernel = int(const uint8_t*, uint8_t*, int, int, int, int, int, int);
constexpr int kEveryColumn = 1, kEveryEighthColumn = 8;

inline Status pad(PadKernel* kernel, std::span<const uint8_t> src, std::span<uint8_t> dst, int width,
                  int height, int out_width, int out_height, int right_margin, int bottom_margin) {
  if (!padded_sizes_ok(width, height, out_width, right_margin, bottom_margin)) return Status::kBadSize;
  const bool planar = kernel == ::NV21toBGR_pad_lsi;
  if (planar && !within({out_height})) return Status::kBadSize;
  const int64_t pixels = padded_pixels(width, height, out_width, right_margin, bottom_margin,
                                       planar ? kEveryEighthColumn : kEveryColumn);
  if (pixels < 0) return Status::kBadSize;
  if (pixels == 0) return Status::kOk;
  const int64_t dst_reach = planar ? 2 * luma_bytes(out_width, out_height) + pixels : 3 * pixels;
  return run(src, padded_source_reach(width, height), dst, dst_reach, kernel, width, height, out_width,
             out_height, right_margin, bottom_margin);
}

}  // namespace detail

/// The padded converters.
///   src  w h + (h / 2 - 1) w + (w & ~1), the second part only if the picture has a pair
///   dst  3 bytes for every pixel of the first (rows - 1) outWidth + C, where rows = h & ~1 and C is the end
///        of the columns touched; with an odd height or a bottom margin at least (h + bottomMargin) outWidth
/// C is the largest of w (if not below 2), the end of the right margin's last block of eight, E, and, if
/// E8 < E, 2 w - E8, where the mirroring of column E8 reads. kBadSize if anything lies before the image,
/// where no span reaches: for a block that overruns twice the width (width 12, right margin 12: column 27
/// mirrors column -4), a negative E8 with E8 < E, and a height of 1. Also for a right margin above the width
/// and a bottom margin above the height; a negative bottom margin is none. outHeight may be anything. Where
/// the kernel touches no pixel (a height of 0, one column without a margin) nothing is written, whatever the
/// buffers.
[[nodiscard]] inline Status NV21toRGB_pad(std::span<const uint8_t> src, std::span<uint8_t> dst, int width,
                                          int height, int outWidth, int outHeight, int rightMargin,
                                          int bottomMargin) {
  return detail::pad(::NV21toRGB_pad, src, dst, width, height, outWidth, outHeight, rightMargin,
                     bottomMargin);
}

/// As NV21toRGB_pad.
[[nodiscard]] inline Status NV21toBGR_pad(std::span<const uint8_t> src, std::span<uint8_t> dst, int width,
                                          int height, int outWidth, int outHeight, int rightMargin,
                                          int bottomMargin) {
  return detail::pad(::NV21toBGR_pad, src, dst, width, height, outWidth, outHeight, rightMargin,
                     bottomMargin);
}

/// As NV21toRGB_pad.
[[nodiscard]] inline Status NV12toRGB_pad(std::span<const uint8_t> src, std::span<uint8_t> dst, int width,
                                          int height, int outWidth, int outHeight, int rightMargin,
                                          int bottomMargin) {
  return detail::pad(::NV12toRGB_pad, src, dst, width, height, outWidth, outHeight, rightMargin,
                     bottomMargin);
}

/// As NV21toRGB_pad, with one byte a pixel behind the first two planes of outWidth x outHeight, and with
/// column E8 as the only one of the margin's tail. Here outHeight must be a size.
[[nodiscard]] inline Status NV21toBGR_pad_lsi(std::span<const uint8_t> src, std::span<uint8_t> dst, int width,
                                              int height, int outWidth, int outHeight, int rightMargin,
                                              int bottomMargin) {
  return detail::pad(::NV21toBGR_pad_lsi, src, dst, width, height, outWidth, outHeight, rightMargin,
                     bottomMargin);
}

/// rgb 3 w h, luma w h, vu ((h + 1) / 2 - 1) w + evenUp(w).
[[nodiscard]] inline Status RGBtoNV21(std::span<const uint8_t> rgb, std::span<uint8_t> luma,
                                      std::span<uint8_t> vu, int width, int height) {
  if (!detail::within({width, height})) return Status::kBadSize;
  const int64_t pixels = detail::luma_bytes(width, height);
  if (!detail::holds(rgb, 3 * pixels)) return Status::kSourceTooSmall;
  if (!detail::holds(vu, detail::chroma_reach(width, height))) return Status::kDestinationTooSmall;
  return detail::run(rgb, 3 * pixels, luma, pixels,
                     [&](const uint8_t* in, uint8_t* y) { ::RGBtoNV21(in, y, vu.data(), width, height); });
}

/// bgr 3 w h, nv21 w h + ((h + 1) / 2 - 1) w + evenUp(w).
[[nodiscard]] inline Status BGRtoNV21(std::span<const uint8_t> bgr, std::span<uint8_t> nv21, int width,
                                      int height) {
  if (!detail::within({width, height})) return Status::kBadSize;
  return detail::run(bgr, 3 * detail::luma_bytes(width, height), nv21, detail::nv21_reach(width, height),
                     ::BGRtoNV21, width, height);
}

/// bgr 3 w h, grey w h.
[[nodiscard]] inline Status BGR2GRAY(std::span<const uint8_t> bgr, std::span<uint8_t> grey, int width,
                                     int height) {
  if (!detail::within({width, height})) return Status::kBadSize;
  const int64_t pixels = detail::luma_bytes(width, height);
  return detail::run(bgr, 3 * pixels, grey, pixels, ::BGR2GRAY, width, height);
}

/// bgr 3 w h bytes, hsv 3 w h floats.
[[nodiscard]] inline Status BGR2HSV(std::span<const uint8_t> bgr, std::span<float> hsv, int width,
                                    int height) {
  if (!detail::within({width, height})) return Status::kBadSize;
  const int64_t samples = 3 * detail::luma_bytes(width, height);
  // The kernel only reads its source, although its type does not say so.
  const std::span<uint8_t> source(const_cast<uint8_t*>(bgr.data()), bgr.size());
  return detail::run(source, samples, hsv, samples, ::BGR2HSV, width, height);
}

}  // namespace morvale::checked
