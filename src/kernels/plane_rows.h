/// Row loops of the plane enlargers (imgproc/resize_plane.h states the rule).
#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/variants.h"

namespace morvale {

struct PlaneRows {
  /// Enlarges a row four times: per pixel and its right neighbour (wa * a + wb * b + 1) >> 8 with weights
  /// 255:1, 192:64, 128:128, 64:192; the last pixel is repeated four times. width >= 1; 4 * width bytes
  /// written.
  void (*quadruple_row)(const uint8_t* src, uint8_t* dst, int width);

  /// The three rows between two rows: weights 192:64, 128:128, 64:192. Row k of them goes to dst + k *
  /// stride, n bytes each.
  void (*quarter_rows)(const uint8_t* above, const uint8_t* below, uint8_t* dst, ptrdiff_t stride,
                       ptrdiff_t n);
};

MORVALE_FOR_EACH_VARIANT(extern const PlaneRows kPlaneRows)

}  // namespace morvale
