/// Where a converter puts its pixels: three layouts with the same operations, so that one converter serves
/// all. Columns and rows may lie outside the picture where a converter's contract says so; hence signed
/// offsets.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

#include "imgproc/nv21_sample.h"

namespace morvale {

/// Three bytes a pixel, red first or blue first.
template <int kRed, int kBlue>
class InterleavedImage {
 public:
  InterleavedImage(uint8_t* data, int width) : data_(data), row_bytes_(ptrdiff_t{3} * width) {}

  void put(int row, int column, Rgb c) const {
    uint8_t* p = at(row, column);
    p[kRed] = c.r;
    p[1] = c.g;
    p[kBlue] = c.b;
  }
  void copy_column(int row, int to, int from) const { std::memmove(at(row, to), at(row, from), 3); }
  void copy_row(int to, int from) const {
    std::memcpy(at(to, 0), at(from, 0), static_cast<size_t>(row_bytes_));
  }

 private:
  uint8_t* at(int row, int column) const { return data_ + row * row_bytes_ + ptrdiff_t{3} * column; }

  uint8_t* data_;
  ptrdiff_t row_bytes_;
};
using RgbImage = InterleavedImage<0, 2>;
using BgrImage = InterleavedImage<2, 0>;

/// Three planes, blue first.
class PlanarBgrImage {
 public:
  PlanarBgrImage(uint8_t* blue, uint8_t* green, uint8_t* red, int width)
      : planes_{blue, green, red}, width_(width) {}

  void put(int row, int column, Rgb c) const {
    *at(0, row, column) = c.b;
    *at(1, row, column) = c.g;
    *at(2, row, column) = c.r;
  }
  void copy_column(int row, int to, int from) const {
    for (int k = 0; k < 3; ++k) *at(k, row, to) = *at(k, row, from);
  }
  void copy_row(int to, int from) const {
    for (int k = 0; k < 3; ++k) std::memcpy(at(k, to, 0), at(k, from, 0), static_cast<size_t>(width_));
  }

 private:
  uint8_t* at(int plane, int row, int column) const { return planes_[plane] + row * width_ + column; }

  uint8_t* planes_[3];
  ptrdiff_t width_;
};

}  // namespace morvale
