/// Row loops of the half-ratio rule (imgproc/resize_nv21.h states it): 2 ix + 1 source columns give two.
/// Every vector form reads, of each row it is given, nothing left of the first or right of the last sample
/// that the rule asks for.
#pragma once

#include "kernels/source_row.h"
#include "kernels/variants.h"

namespace morvale {

/// The source of two output rows.
struct HalfRatioSource {
  SourceRow first;         ///< of the upper output row
  SourceRow upper, lower;  ///< of the lower one: their mean
  int ix;                  ///< whole source columns per output column
};

struct HalfRatioRows {
  /// From source column c on: first[c] and the mean of first[c + ix], first[c + ix + 1] for `above`; the mean
  /// of upper[c], lower[c] and of the four at c + ix and the next for `under`; then c + 2 * ix + 1 and so on.
  /// Means truncate. `width` bytes are written to each: a row may end inside a pair.
  using Loop = void (*)(const HalfRatioSource& source, int column, uint8_t* above, uint8_t* under, int width);
  Loop bytes, pairs;
};

MORVALE_FOR_EACH_VARIANT(extern const HalfRatioRows kHalfRatioRows)

}  // namespace morvale
