/// The masked blur behind size checks (checked.h): the kernels of imgproc/grid_blur.h.
#pragma once

#include <cstdint>
#include <span>

#include <morvale/checked/reach.h>
#include <morvale/imgproc/grid_blur.h>

namespace morvale::checked {

/// weights 2 radius + 1 values. kBadSize where the kernel returns -1.
[[nodiscard]] inline Status GFilterCreation(float sigma, int radius, int bits, std::span<uint16_t> weights) {
  if (radius < 0 || radius > kMaxBlurRadius || (bits != 8 && bits != 14)) return Status::kBadSize;
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
  if (radius < 0 || radius > kMaxBlurRadius || (bits != 8 && bits != 14)) return Status::kBadSize;
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
