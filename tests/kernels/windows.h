/// The windows through which masks grow, stated pixel by pixel.
#pragma once

#include <cstddef>
#include <cstdint>

namespace morvale {

/// A summed-area table, row stride `width`: entry (x, y) counts the mask's pixels in rows 0..y, columns 0..x.
/// (F. C. Crow, "Summed-area tables for texture mapping", 1984.)
class SummedArea {
 public:
  SummedArea(int32_t* table, int width) : table_(table), width_(width) {}

  /// Adds the mask's pixel (x, y). Pixels come row by row.
  void add(int x, int y, bool set) {
    int32_t sum = set;
    if (x > 0) sum += at(x - 1, y);
    if (y > 0) sum += at(x, y - 1);
    if (x > 0 && y > 0) sum -= at(x - 1, y - 1);
    table_[static_cast<ptrdiff_t>(y) * width_ + x] = sum;
  }
  int32_t at(int x, int y) const { return table_[static_cast<ptrdiff_t>(y) * width_ + x]; }

 private:
  int32_t* table_;
  int width_;
};

/// Pixels of the mask around (x, y) in a W x H picture: rows y-7 .. y+8 and columns x-7 .. x+8. While the
/// window's far edge lies in the first 17 rows or columns it shrinks to rows 0 .. y or columns 0 .. x and
/// does not look ahead. The asymmetry decides which regions touch; it stays.
inline int32_t near_window(const SummedArea& s, int x, int y, int W, int H) {
  constexpr int kReach = 8;
  const int x1 = x > kReach ? x - kReach : 0, x2 = x + kReach < W ? x + kReach : W - 1;
  const int y1 = y > kReach ? y - kReach : 0, y2 = y + kReach < H ? y + kReach : H - 1;
  if (y2 <= 2 * kReach && x2 <= 2 * kReach) return s.at(x, y);
  if (x2 <= 2 * kReach) return s.at(x, y2) - s.at(x, y1);
  if (y2 <= 2 * kReach) return s.at(x2, y) - s.at(x1, y);
  return s.at(x2, y2) - s.at(x1, y2) - s.at(x2, y1) + s.at(x1, y1);
}

/// Pixels of the mask in the 3 x 3 block that ends at (x, y). In the first four rows or columns the block
/// reaches back to row 0 or column 0: row 3 still does, row 4 looks at rows 2 .. 4.
inline int32_t trailing_window(const SummedArea& s, int x, int y) {
  constexpr int kSize = 3;
  int32_t count = s.at(x, y);
  if (x > kSize) count -= s.at(x - kSize, y);
  if (y > kSize) count -= s.at(x, y - kSize);
  if (x > kSize && y > kSize) count += s.at(x - kSize, y - kSize);
  return count;
}

}  // namespace morvale
