/// Row loops of the bilinear rule (imgproc/resize_nv21.h states it). A sample has one byte, or two for a
/// chroma pair. Every vector form reads, of each row it is given, nothing left of the first or right of the
/// last sample that the rule asks for.
#pragma once

#include <cstddef>
#include <cstdint>

#include "kernels/source_row.h"
#include "kernels/variants.h"

namespace morvale {

/// The source of one output row.
struct BilinearSource {
  SourceRow top, below;
  int fy;    ///< Q8 weight of `below`, 0..255; with 0 `below` is `top`
  int step;  ///< Q8 source position per output sample, not negative
  /// Bytes from these rows to those of the next output row, which are asked for before they are needed: a
  /// camera's frame is not in the cache. 0 for none. Nothing is read there.
  ptrdiff_t ahead;
};

struct BilinearRows {
  /// Output sample x is at Q8 position p = position + x * step, column c = p >> 8 and fraction f = p & 255:
  ///   (((256 - f) top[c] + f top[c + 1]) (256 - fy) + ((256 - f) below[c] + f below[c + 1]) fy) >> 16
  /// A neighbour of weight 0 is not read. `width` bytes are written: a row may end inside a pair.
  using Loop = void (*)(const BilinearSource& source, int position, uint8_t* dst, int width);
  Loop bytes, pairs;
};

MORVALE_FOR_EACH_VARIANT(extern const BilinearRows kBilinearRows)

}  // namespace morvale
