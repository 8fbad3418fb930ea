/// Row loops of resampling (imgproc/resize_nv21.h states the rule). A sample has one byte, or two for a
/// chroma pair. Every vector form reads, of each row it is given, nothing left of the first or right of the
/// last sample that the rule asks for.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/variants.h"

namespace morvale {

/// One row to read from. A column past `last` reads as `last`, which is at least 0.
struct SourceRow {
  const uint8_t* data;
  int last;
};

/// The source of one output row of the bilinear rule.
struct BilinearRows {
  SourceRow top, below;
  int fy;    ///< Q8 weight of `below`, 0..255; with 0 `below` is `top`
  int step;  ///< Q8 source position per output sample, not negative
  /// Bytes from these rows to those of the next output row, which are asked for before they are needed: a
  /// camera's frame is not in the cache. 0 for none. Nothing is read there.
  ptrdiff_t ahead;
};

/// The source of two output rows of the half-ratio rule.
struct HalfRatioRows {
  SourceRow first;         ///< of the upper output row
  SourceRow upper, lower;  ///< of the lower one: their mean
  int ix;                  ///< whole source columns per output column; two output columns take 2 * ix + 1
};

struct ResampleRows {
  /// Output sample x is at Q8 position p = position + x * step, column c = p >> 8 and fraction f = p & 255:
  ///   (((256 - f) top[c] + f top[c + 1]) (256 - fy) + ((256 - f) below[c] + f below[c + 1]) fy) >> 16
  /// A neighbour of weight 0 is not read. `width` bytes are written: a row may end inside a pair.
  void (*bilinear_bytes)(const BilinearRows& rows, int position, uint8_t* dst, int width);
  void (*bilinear_pairs)(const BilinearRows& rows, int position, uint8_t* dst, int width);

  /// From source column c on: first[c] and the mean of first[c + ix], first[c + ix + 1] for `above`; the mean
  /// of upper[c], lower[c] and of the four at c + ix and the next for `under`; then c + 2 * ix + 1 and so on.
  /// Means truncate. `width` bytes are written to each.
  void (*half_ratio_bytes)(const HalfRatioRows& rows, int column, uint8_t* above, uint8_t* under, int width);
  void (*half_ratio_pairs)(const HalfRatioRows& rows, int column, uint8_t* above, uint8_t* under, int width);
};

MORVALE_FOR_EACH_VARIANT(extern const ResampleRows kResampleRows)

}  // namespace morvale
