/// Block loops of rotation (imgproc/rotate.h states the mappings). Source and destination must not overlap.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/variants.h"

namespace morvale {

struct RotateBlocks {
  /// dst[x * dst_stride + y] = src[y * src_stride + x] for x in [0, columns), y in [0, rows). Strides are in
  /// bytes and may be negative: a quarter turn is a transposition whose source or destination rows are walked
  /// from the last one up. Nothing else is read or written; bytes may be written twice.
  void (*transpose_bytes)(const uint8_t* src, ptrdiff_t src_stride, uint8_t* dst, ptrdiff_t dst_stride,
                          int columns, int rows);

  /// The same for chroma pairs; columns and rows count pairs, strides are still in bytes.
  void (*transpose_pairs)(const uint8_t* src, ptrdiff_t src_stride, uint8_t* dst, ptrdiff_t dst_stride,
                          int columns, int rows);

  /// The last byte first: dst[i] = src[n - 1 - i].
  void (*reverse_bytes)(const uint8_t* src, uint8_t* dst, ptrdiff_t n);

  /// The last of n pairs first; a pair keeps the order of its two bytes.
  void (*reverse_pairs)(const uint8_t* src, uint8_t* dst, ptrdiff_t n);
};

MORVALE_FOR_EACH_VARIANT(extern const RotateBlocks kRotateBlocks)

}  // namespace morvale
