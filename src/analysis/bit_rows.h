/// A mask of one bit a pixel.
#pragma once

#include <cstddef>
#include <cstdint>

namespace morvale {

/// A view. Word j of a row holds pixels 64 * j .. 64 * j + 63, the first in the lowest bit; bits behind the
/// width are 0. Words of one column of the picture follow each other, so that the rows are handled side by
/// side.
struct BitRows {
  static constexpr int kBits = 64;

  uint64_t* words;
  int width, height;

  int columns() const { return (width + kBits - 1) / kBits; }
  uint64_t* column(int j) const { return words + static_cast<ptrdiff_t>(j) * height; }
  bool at(int x, int y) const { return (column(x / kBits)[y] >> (x % kBits) & 1) != 0; }

  /// Words of a width x height mask.
  static size_t size(int width, int height) {
    return static_cast<size_t>((width + kBits - 1) / kBits) * static_cast<size_t>(height);
  }
};

}  // namespace morvale
