/// Loops around the network (core/segmentation.h states the rules): its input, its scores, the smoothing.
#pragma once

#include <cstddef>
#include <cstdint>

#include <morvale/core/globals.h>
#include "kernels/variants.h"

namespace morvale {

/// Scores of one cell of a label map.
constexpr ptrdiff_t kCellScores = kLabels;

struct NetworkRows {
  /// Pixel bytes as network input, -1..1: 2 * byte / 255 - 1, formed in double precision, stored as float32.
  void (*to_input)(const uint8_t* bytes, float* floats, ptrdiff_t n);

  /// Network scores as bytes: trunc((score + 10) * 255 / 20) in float32, clamped to 0..255; NaN gives 0.
  void (*to_bytes)(const float* scores, uint8_t* bytes, ptrdiff_t n);

  /// Blends cells of five bytes with the former frame's, in place. Per cell S = sum of the five |now -
  /// before|, D = (S + 2) / divisor kept as a byte, W = max(256 - 2 * D, 0); every byte becomes (W * before +
  /// (256 - W) * now) >> 8. The divisor is 4 (front), where D can reach 319 and wraps to 63, or 5 (back),
  /// where it cannot wrap.
  void (*smooth_front)(uint8_t* now, const uint8_t* before, ptrdiff_t cells);
  void (*smooth_back)(uint8_t* now, const uint8_t* before, ptrdiff_t cells);

  /// planes[k][p] = map[5 * p + k] for the five scores k of every cell p.
  void (*split)(const uint8_t* map, uint8_t* const* planes, ptrdiff_t cells);
};

MORVALE_FOR_EACH_VARIANT(extern const NetworkRows kNetworkRows)

}  // namespace morvale
