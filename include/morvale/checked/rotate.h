/// Turning behind size checks (checked.h): the kernels of imgproc/rotate.h.
#pragma once

#include <cstdint>
#include <span>

#include <morvale/checked/reach.h>
#include <morvale/imgproc/rotate.h>

namespace morvale::checked {

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

}  // namespace morvale::checked
