/// Scaling behind size checks (checked.h): the kernels of imgproc/resize_nv21.h and imgproc/resize_plane.h.
#pragma once

#include <algorithm>
#include <cstdint>
#include <span>

#include <morvale/checked/reach.h>
#include <morvale/imgproc/resize_nv21.h>
#include <morvale/imgproc/resize_plane.h>

namespace morvale::checked {

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

}  // namespace morvale::checked
