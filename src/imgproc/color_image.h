/// Where a converter puts its pixels: two layouts with the same operations, so that one converter serves
/// all. Columns and rows may lie outside the picture where a converter's contract says so; hence signed
/// offsets.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kernels/color_rows.h"

namespace morvale {

/// Three bytes a pixel.
class PixelImage {
 public:
  PixelImage(uint8_t* data, int width, int height)
      : data_(data), width_(width), row_bytes_(ptrdiff_t{3} * width), large_(row_bytes_ * height > kLarge) {}

  int width() const { return width_; }
  /// Where a decoder writes from there on.
  ColorRowsOut from(int row, int column) const { return {{at(row, column)}, row_bytes_, large_}; }
  void copy_column(int row, int to, int from) const { std::memmove(at(row, to), at(row, from), 3); }
  void copy_row(int to, int from) const {
    std::memcpy(at(to, 0), at(from, 0), static_cast<size_t>(row_bytes_));
  }

 private:
  /// Larger images leave little in the caches for whoever reads them next; below, going around them gains
  /// nothing.
  static constexpr ptrdiff_t kLarge = ptrdiff_t{8} << 20;

  uint8_t* at(int row, int column) const { return data_ + row * row_bytes_ + ptrdiff_t{3} * column; }

  uint8_t* data_;
  int width_;
  ptrdiff_t row_bytes_;
  bool large_;
};

/// Three planes, blue first.
class PlanarBgrImage {
 public:
  PlanarBgrImage(uint8_t* blue, uint8_t* green, uint8_t* red, int width)
      : planes_{blue, green, red}, width_(width) {}

  int width() const { return width_; }
  ColorRowsOut from(int row, int column) const {
    return {{at(0, row, column), at(1, row, column), at(2, row, column)}, width_, false};
  }
  void copy_column(int row, int to, int from) const {
    for (int k = 0; k < 3; ++k) *at(k, row, to) = *at(k, row, from);
  }
  void copy_row(int to, int from) const {
    for (int k = 0; k < 3; ++k) std::memcpy(at(k, to, 0), at(k, from, 0), static_cast<size_t>(width_));
  }

 private:
  uint8_t* at(int plane, int row, int column) const {
    return planes_[plane] + ptrdiff_t{row} * width_ + column;
  }

  uint8_t* planes_[3];
  int width_;
};

}  // namespace morvale
