/// The image kernels behind checks: the same names in namespace morvale::checked, with spans for pointers.
/// Each call works out how far its kernel reaches into every buffer, and runs the kernel, with the same
/// pixels, only if all of them are long enough. Otherwise it returns why not and writes nothing. That costs a
/// few integer operations a call, whatever the size of the picture. Header-only, no state, callable from any
/// thread.
///
/// The reach of a kernel in a buffer is the number of bytes up to and with the last one that it reads or
/// writes, so a buffer may lack what the kernel leaves alone (the unsampled last row of a halved picture,
/// say) and must have what it takes beyond the picture (the last block of NV21toBGR). An NV21 image in one
/// buffer has at least its luma plane. Where the formulas below say w and h they mean width and height;
/// divisions truncate, evenUp and eightUp round up to a multiple of 2 and 8.
///
/// Sizes of 0 are legal where the kernel writes nothing for them: kOk, and nothing is written. Negative sizes
/// never are. All sizes, strides, places and margins stay below kSizeEnd, those of the scaling to any size
/// below kScaledSizeEnd. Not checked: whether buffers overlap, which no kernel allows, and what is in them.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <initializer_list>
#include <span>

#include <morvale/analysis/hsv.h>
#include <morvale/imgproc/color_convert.h>
#include <morvale/imgproc/grid_blur.h>
#include <morvale/imgproc/resize_nv21.h>
#include <morvale/imgproc/resize_plane.h>
#include <morvale/imgproc/rotate.h>

namespace morvale::checked {

/// What became of a call. Nothing is written unless it is kOk.
enum class Status {
  kOk,                   ///< the kernel has run, if there was anything for it to do
  kBadSize,              ///< a size or another argument that the kernel is not made for; no buffer would do
  kSourceTooSmall,       ///< the kernel would read past the end of a source, a grid or a table of weights
  kDestinationTooSmall,  ///< the kernel would go past the end of a destination
};

/// One sentence for a person.
constexpr const char* message(Status status) {
  switch (status) {
    case Status::kOk:
      return "All buffers are large enough, and the kernel has run.";
    case Status::kBadSize:
      return "A size, stride, margin or other argument is outside what the kernel is made for.";
    case Status::kSourceTooSmall:
      return "A source buffer is shorter than the part that the kernel reads.";
    case Status::kDestinationTooSmall:
      return "A destination buffer is shorter than the part that the kernel touches.";
  }
  return "The status is unknown.";
}

/// Below this every product of sizes fits the kernels' own arithmetic (a 64-fold height in 32 bits) and the
/// reaches fit 64 bits.
constexpr int kSizeEnd = 1 << 25;
/// The scaling to any size counts source positions in 1/256 in 32 bits.
constexpr int kScaledSizeEnd = 1 << 23;

namespace detail {

constexpr bool within(std::initializer_list<int> sizes, int end = kSizeEnd) {
  return std::all_of(sizes.begin(), sizes.end(), [end](int s) { return s >= 0 && s < end; });
}

template <class T>
constexpr bool holds(std::span<T> buffer, int64_t reach) {
  return static_cast<uint64_t>(buffer.size()) >= static_cast<uint64_t>(reach);
}

constexpr int64_t even_up(int64_t n) { return (n + 1) / 2 * 2; }
constexpr int64_t eight_up(int64_t n) { return (n + 7) / 8 * 8; }

/// Rows `stride` apart, of which `last` bytes of the last one count. Nothing if there is no row or no byte.
constexpr int64_t rows_reach(int64_t rows, int64_t stride, int64_t last) {
  return rows < 1 || last < 1 ? 0 : (rows - 1) * stride + last;
}

constexpr int64_t luma_bytes(int64_t width, int64_t height) { return width * height; }

/// Chroma rows with a pair for every luma pixel: the pair of an odd last column ends one byte behind its row.
constexpr int64_t chroma_reach(int64_t width, int64_t height) {
  return rows_reach((height + 1) / 2, width, even_up(width));
}
constexpr int64_t nv21_reach(int64_t width, int64_t height) {
  return luma_bytes(width, height) + chroma_reach(width, height);
}

/// Calls a kernel with one source and one destination if both are long enough.
template <class S, class D, class Kernel, class... Arguments>
Status run(std::span<S> src, int64_t src_reach, std::span<D> dst, int64_t dst_reach, Kernel kernel,
           Arguments... arguments) {
  if (!holds(src, src_reach)) return Status::kSourceTooSmall;
  if (!holds(dst, dst_reach)) return Status::kDestinationTooSmall;
  kernel(src.data(), dst.data(), arguments...);
  return Status::kOk;
}

}  // namespace detail

// ---- Colour (imgproc/color_convert.h, analysis/hsv.h) ----

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

// ---- Scaling of NV21 images and planes (imgproc/resize_nv21.h, imgproc/resize_plane.h) ----

namespace detail {

/// How the scaling to any size walks through its source: in 1/256 of a sample, or in whole ones by the
/// averaging of half ratios.
struct Walk {
  int64_t step_x, step_y;
  bool half_ratio;

  constexpr Walk(int src_width, int src_height, int dst_width, int dst_height)
      : step_x((int64_t{src_width} << 8) / dst_width),
        step_y((int64_t{src_height} << 8) / dst_height),
        half_ratio(step_x % 256 == 128 && step_y % 256 == 128) {}

  /// The last source sample that output `i` reads: its right or lower neighbour if that has any weight.
  constexpr int64_t last_read(int64_t i, int64_t step) const {
    if (!half_ratio) return (i * step + 255) / 256;
    const int64_t whole = step / 256;
    return i / 2 * (2 * whole + 1) + (i % 2 == 0 ? 0 : whole + 1);
  }
  /// Averaged rows come in twos.
  constexpr int64_t rows_written(int64_t rows) const { return half_ratio ? even_up(rows) : rows; }

  /// A plane of samples of `channels` bytes, scaled to rows of `row_bytes`; a row may end inside a sample,
  /// and then the sample before it may reach further.
  constexpr int64_t source_reach(int64_t stride, int64_t row_bytes, int64_t rows, int64_t channels) const {
    if (rows < 1) return 0;
    const int64_t columns = (row_bytes + channels - 1) / channels;
    int64_t row_end = 0;
    for (int64_t x = std::max<int64_t>(columns - 2, 0); x < columns; ++x) {
      row_end =
          std::max(row_end, channels * last_read(x, step_x) + std::min(channels, row_bytes - channels * x));
    }
    return last_read(rows_written(rows) - 1, step_y) * stride + row_end;
  }
};

/// What a scaled NV21 image takes; nothing if it is empty.
struct ScaledReach {
  int64_t luma = 0, chroma = 0, dst = 0;

  constexpr ScaledReach(int src_width, int src_height, int dst_width, int dst_height) {
    if (dst_width < 1 || dst_height < 1) return;
    const Walk walk(src_width, src_height, dst_width, dst_height);
    const int64_t rows = dst_height / 2;
    luma = walk.source_reach(src_width, dst_width, dst_height, 1);
    chroma = walk.source_reach(src_width, dst_width, rows, 2);
    dst = std::max(walk.rows_written(dst_height), dst_height + walk.rows_written(rows)) * dst_width;
  }
};

/// A picture cannot be made from an empty one, although the kernels would read a first sample all the same.
constexpr bool scaled_sizes_ok(int src_width, int src_height, int dst_width, int dst_height) {
  if (!within({src_width, src_height, dst_width, dst_height}, kScaledSizeEnd)) return false;
  return dst_width == 0 || dst_height == 0 || (src_width > 0 && src_height > 0);
}

}  // namespace detail

/// With steps sx, sy in 1/256 of a sample, the last source column of output column i is that of
/// (i sx + 255) / 256, or by the half-ratio rule i / 2 * (2 ix + 1), and for odd i ix + 1 more; rows
/// likewise.
///   luma, vu  (last source row) srcWidth + end of the last source sample in it; no vu if dstHeight < 2
///   dst       (dstHeight + dstHeight / 2) dstWidth; half-ratio rows come in twos, so dstHeight / 2 becomes
///             evenUp(dstHeight / 2)
/// An empty destination writes nothing; kBadSize for a picture from an empty source.
[[nodiscard]] inline Status resize_NV21_opt(std::span<const uint8_t> luma, std::span<const uint8_t> vu,
                                            std::span<uint8_t> dst, int srcWidth, int srcHeight, int dstWidth,
                                            int dstHeight) {
  if (!detail::scaled_sizes_ok(srcWidth, srcHeight, dstWidth, dstHeight)) return Status::kBadSize;
  const detail::ScaledReach reach(srcWidth, srcHeight, dstWidth, dstHeight);
  if (reach.dst == 0) return Status::kOk;
  if (!detail::holds(vu, reach.chroma)) return Status::kSourceTooSmall;
  return detail::run(luma, reach.luma, dst, reach.dst, [&](const uint8_t* y, uint8_t* out) {
    ::resize_NV21_opt(y, vu.data(), out, srcWidth, srcHeight, dstWidth, dstHeight);
  });
}

/// As resize_NV21_opt; src is the larger of the reach in luma and srcWidth srcHeight plus that in chroma.
[[nodiscard]] inline Status resize_NV21(std::span<const uint8_t> src, std::span<uint8_t> dst, int srcWidth,
                                        int srcHeight, int dstWidth, int dstHeight) {
  if (!detail::scaled_sizes_ok(srcWidth, srcHeight, dstWidth, dstHeight)) return Status::kBadSize;
  const detail::ScaledReach reach(srcWidth, srcHeight, dstWidth, dstHeight);
  if (reach.dst == 0) return Status::kOk;
  const int64_t src_reach = std::max(reach.luma, detail::luma_bytes(srcWidth, srcHeight) + reach.chroma);
  return detail::run(src, src_reach, dst, reach.dst, ::resize_NV21, srcWidth, srcHeight, dstWidth, dstHeight);
}

/// As the luma of resize_NV21_opt; dst dstHeight dstWidth, by the half-ratio rule evenUp(dstHeight) dstWidth.
[[nodiscard]] inline Status resize_Y_1(std::span<const uint8_t> src, std::span<uint8_t> dst, int srcWidth,
                                       int srcHeight, int dstWidth, int dstHeight) {
  if (!detail::scaled_sizes_ok(srcWidth, srcHeight, dstWidth, dstHeight)) return Status::kBadSize;
  if (dstWidth == 0 || dstHeight == 0) return Status::kOk;
  const detail::Walk walk(srcWidth, srcHeight, dstWidth, dstHeight);
  return detail::run(src, walk.source_reach(srcWidth, dstWidth, dstHeight, 1), dst,
                     walk.rows_written(dstHeight) * dstWidth, ::resize_Y_1, srcWidth, srcHeight, dstWidth,
                     dstHeight);
}

/// src w h + (h / 2 - 1) w + (w & ~1), dst 4 w h + 4 w (h / 2); without chroma (w or h below 2) the luma
/// alone.
[[nodiscard]] inline Status resize_NV21_2x_up(std::span<const uint8_t> src, std::span<uint8_t> dst, int width,
                                              int height) {
  if (!detail::within({width, height})) return Status::kBadSize;
  const int64_t luma = detail::luma_bytes(width, height);
  const int64_t rows = width < 2 ? 0 : height / 2;
  return detail::run(src, luma + detail::rows_reach(rows, width, width / 2 * 2), dst,
                     4 * luma + 4 * rows * width, ::resize_NV21_2x_up, width, height);
}

namespace detail {

/// The shrinking kernels: every block of `factor` x `factor` samples becomes one, luma first, then the pairs
/// of the chroma. `used` is how much of a block is read, counted from its first sample along each direction.
inline Status shrink(void (*kernel)(const uint8_t*, uint8_t*, int, int), std::span<const uint8_t> src,
                     std::span<uint8_t> dst, int width, int height, int factor, int used) {
  if (!within({width, height})) return Status::kBadSize;
  const int64_t columns = width / factor, rows = height / factor;
  if (columns < 1 || rows < 1) return Status::kOk;
  const int64_t pairs = columns / 2, pair_rows = rows / 2;
  const int64_t unused = factor - used;
  const int64_t chroma = rows_reach(factor * pair_rows - unused, width, 2 * (factor * pairs - unused));
  return run(src, luma_bytes(width, height) + chroma, dst,
             columns * rows + rows_reach(pair_rows, columns, 2 * pairs), kernel, width, height);
}

}  // namespace detail

/// src w h + (2 (h / 4) - 2) w + 4 (w / 4) - 2, dst (w / 2) (h / 2) + (h / 4 - 1) (w / 2) + 2 (w / 4);
/// without chroma (w or h below 4) the luma alone. Nothing is written if w or h is below 2, whatever the
/// buffers.
[[nodiscard]] inline Status resize_NV21_2x_down(std::span<const uint8_t> src, std::span<uint8_t> dst,
                                                int width, int height) {
  return detail::shrink(::resize_NV21_2x_down, src, dst, width, height, 2, 1);
}

/// src w h + (3 (h / 6) - 1) w + 6 (w / 6), dst (w / 3) (h / 3) + (h / 6 - 1) (w / 3) + 2 (w / 6); without
/// chroma (w or h below 6) the luma alone. Nothing is written if w or h is below 3, whatever the buffers.
[[nodiscard]] inline Status resize_NV21_3x_down(std::span<const uint8_t> src, std::span<uint8_t> dst,
                                                int width, int height) {
  return detail::shrink(::resize_NV21_3x_down, src, dst, width, height, 3, 3);
}

/// The enlargers of whole planes: src w h, dst n n w h for an n-fold size.
[[nodiscard]] inline Status resize_y_2x_up(std::span<const uint8_t> src, std::span<uint8_t> dst, int width,
                                           int height) {
  if (!detail::within({width, height})) return Status::kBadSize;
  const int64_t pixels = detail::luma_bytes(width, height);
  return detail::run(src, pixels, dst, 4 * pixels, ::resize_y_2x_up, width, height);
}

/// As resize_y_2x_up.
[[nodiscard]] inline Status resize_y_4x_up(std::span<const uint8_t> src, std::span<uint8_t> dst, int width,
                                           int height) {
  if (!detail::within({width, height})) return Status::kBadSize;
  const int64_t pixels = detail::luma_bytes(width, height);
  return detail::run(src, pixels, dst, 16 * pixels, ::resize_y_4x_up, width, height);
}

/// As resize_y_2x_up.
[[nodiscard]] inline Status resize_y_6x_up(std::span<const uint8_t> src, std::span<uint8_t> dst, int width,
                                           int height) {
  if (!detail::within({width, height})) return Status::kBadSize;
  const int64_t pixels = detail::luma_bytes(width, height);
  return detail::run(src, pixels, dst, 36 * pixels, ::resize_y_6x_up, width, height);
}

/// As resize_y_2x_up; kBadSize for a factor outside 1..64.
[[nodiscard]] inline Status resize_y(std::span<const uint8_t> src, std::span<uint8_t> dst, int width,
                                     int height, int factor) {
  if (!detail::within({width, height}) || factor < 1 || factor > 64) return Status::kBadSize;
  const int64_t pixels = detail::luma_bytes(width, height);
  return detail::run(src, pixels, dst, pixels * factor * factor, ::resize_y, width, height, factor);
}

namespace detail {

/// A region must lie within its rows, and enlarged rows apart: the strides say how long rows are.
constexpr bool region_ok(int src_stride, int x, int y, int width, int height, int dst_stride,
                         int dst_row_bytes) {
  return within({src_stride, x, y, width, height, dst_stride}) && x + width <= src_stride &&
         dst_row_bytes <= dst_stride;
}
constexpr int64_t region_reach(int64_t src_stride, int64_t x, int64_t y, int64_t width, int64_t height) {
  return width < 1 || height < 1 ? 0 : (y + height - 1) * src_stride + x + width;
}

}  // namespace detail

/// src (y + h - 1) srcStride + x + w, dst (h - 1) dstStride + 8 w. kBadSize also for a region that leaves its
/// rows (x + w above srcStride) and for destination rows that would overlap (dstStride below 8 w).
[[nodiscard]] inline Status resize_y_8x_up_RR_hori(std::span<const uint8_t> src, std::span<uint8_t> dst,
                                                   int srcStride, int x, int y, int width, int height,
                                                   int dstStride) {
  if (!detail::within({width}) || !detail::region_ok(srcStride, x, y, width, height, dstStride, 8 * width))
    return Status::kBadSize;
  return detail::run(src, detail::region_reach(srcStride, x, y, width, height), dst,
                     detail::rows_reach(height, dstStride, int64_t{8} * width), ::resize_y_8x_up_RR_hori,
                     srcStride, x, y, width, height, dstStride);
}

/// src as above, dst (8 h - 1) dstStride + w; dstStride at least w.
[[nodiscard]] inline Status resize_y_8x_up_RR_vert(std::span<const uint8_t> src, std::span<uint8_t> dst,
                                                   int srcStride, int x, int y, int width, int height,
                                                   int dstStride) {
  if (!detail::region_ok(srcStride, x, y, width, height, dstStride, width)) return Status::kBadSize;
  return detail::run(src, detail::region_reach(srcStride, x, y, width, height), dst,
                     detail::rows_reach(int64_t{8} * height, dstStride, width), ::resize_y_8x_up_RR_vert,
                     srcStride, x, y, width, height, dstStride);
}

// ---- Turning (imgproc/rotate.h) ----

/// src and dst w h, any mode.
[[nodiscard]] inline Status rotate_y(std::span<const uint8_t> src, std::span<uint8_t> dst, int width,
                                     int height, int mode) {
  if (!detail::within({width, height})) return Status::kBadSize;
  const int64_t pixels = detail::luma_bytes(width, height);
  return detail::run(src, pixels, dst, pixels, ::rotate_y, width, height, mode);
}

/// As rotate_y.
[[nodiscard]] inline Status rotate_y_opt(std::span<const uint8_t> src, std::span<uint8_t> dst, int width,
                                         int height, int mode) {
  if (!detail::within({width, height})) return Status::kBadSize;
  const int64_t pixels = detail::luma_bytes(width, height);
  return detail::run(src, pixels, dst, pixels, ::rotate_y_opt, width, height, mode);
}

namespace detail {

inline Status rotate_nv21(void (*kernel)(const uint8_t*, uint8_t*, int, int, int),
                          std::span<const uint8_t> src, std::span<uint8_t> dst, int width, int height,
                          int mode) {
  if (!within({width, height})) return Status::kBadSize;
  const bool quarter = mode == 0 || mode == 2;
  return run(src, nv21_reach(width, height), dst,
             quarter ? nv21_reach(height, width) : nv21_reach(width, height), kernel, width, height, mode);
}

}  // namespace detail

/// src w h + ((h + 1) / 2 - 1) w + evenUp(w), dst the same of the turned picture: w and h change places in
/// modes 0 and 2.
[[nodiscard]] inline Status rotate_NV21(std::span<const uint8_t> src, std::span<uint8_t> dst, int width,
                                        int height, int mode) {
  return detail::rotate_nv21(::rotate_NV21, src, dst, width, height, mode);
}

/// As rotate_NV21.
[[nodiscard]] inline Status rotate_NV21_opt(std::span<const uint8_t> src, std::span<uint8_t> dst, int width,
                                            int height, int mode) {
  return detail::rotate_nv21(::rotate_NV21_opt, src, dst, width, height, mode);
}

// ---- Blur (imgproc/grid_blur.h) ----

/// weights 2 radius + 1 values. kBadSize where the kernel returns -1.
[[nodiscard]] inline Status GFilterCreation(float sigma, int radius, int bits, std::span<uint16_t> weights) {
  if (radius < 0 || radius > 127 || (bits != 8 && bits != 14)) return Status::kBadSize;
  if (!detail::holds(weights, 2 * radius + 1)) return Status::kDestinationTooSmall;
  ::GFilterCreation(sigma, radius, bits, weights.data());
  return Status::kOk;
}

namespace detail {

using BlurKernel = void(const uint8_t*, uint8_t*, const uint8_t*, int, int, const uint16_t*, int, int);

inline Status blur(BlurKernel* kernel, std::span<const uint8_t> src, std::span<uint8_t> dst,
                   std::span<const uint8_t> grid, int width, int height, std::span<const uint16_t> weights,
                   int radius, int bits) {
  if (!within({width, height}) || width > kBlurGridColumns * kBlurCell) return Status::kBadSize;
  if (radius < 0 || radius > 127 || (bits != 8 && bits != 14)) return Status::kBadSize;
  const int64_t pixels = luma_bytes(width, height);
  const int64_t cells =
      rows_reach(eight_up(height) / kBlurCell, kBlurGridColumns, eight_up(width) / kBlurCell);
  if (!holds(grid, cells) || !holds(weights, 2 * radius + 1)) return Status::kSourceTooSmall;
  return run(src, pixels, dst, pixels, [&](const uint8_t* in, uint8_t* out) {
    kernel(in, out, grid.data(), width, height, weights.data(), radius, bits);
  });
}

}  // namespace detail

/// src and dst w h, grid (eightUp(h) / 8 - 1) 600 + eightUp(w) / 8, weights 2 radius + 1 values, also where
/// no cell is marked. kBadSize for a width above 4800 and for what GFilterCreation refuses.
[[nodiscard]] inline Status GaussianBlur_Grid_Hori(std::span<const uint8_t> src, std::span<uint8_t> dst,
                                                   std::span<const uint8_t> grid, int width, int height,
                                                   std::span<const uint16_t> weights, int radius, int bits) {
  return detail::blur(::GaussianBlur_Grid_Hori, src, dst, grid, width, height, weights, radius, bits);
}

/// As GaussianBlur_Grid_Hori.
[[nodiscard]] inline Status GaussianBlur_Grid_Vert(std::span<const uint8_t> src, std::span<uint8_t> dst,
                                                   std::span<const uint8_t> grid, int width, int height,
                                                   std::span<const uint16_t> weights, int radius, int bits) {
  return detail::blur(::GaussianBlur_Grid_Vert, src, dst, grid, width, height, weights, radius, bits);
}

}  // namespace morvale::checked
