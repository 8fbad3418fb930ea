#include "analysis/grow_rows.h"

#include <algorithm>

#include "kernels/kernel_set.h"

namespace morvale {
namespace {

/// The near window: the rows or columns before and behind that it takes in, and how many at the border look
/// back to the border and not ahead. A picture that is no larger than kWhole looks back everywhere.
constexpr int kBefore = 7, kBehind = 8, kBackLooking = 9, kWhole = 17;

/// Every row becomes the OR of rows y - 7 .. y + 8. `wide` has room for 15 rows more.
void grow_down(const uint64_t* rows, uint64_t* grown, uint64_t* wide, ptrdiff_t height) {
  uint64_t all = 0;
  const ptrdiff_t back_looking = height <= kWhole ? height : kBackLooking;
  for (ptrdiff_t y = 0; y < back_looking; ++y) grown[y] = all |= rows[y];
  if (back_looking == height) return;

  constexpr ptrdiff_t kReach = kBefore + kBehind;
  std::fill(std::copy(rows, rows + height, wide), wide + height + kReach, uint64_t{0});
  // The window is doubled: 2, 4, 8, 16 rows from y on.
  for (ptrdiff_t y = 0; y < height + 14; ++y) wide[y] |= wide[y + 1];
  for (ptrdiff_t y = 0; y < height + 12; ++y) wide[y] |= wide[y + 2];
  for (ptrdiff_t y = 0; y < height + 8; ++y) wide[y] |= wide[y + 4];
  for (ptrdiff_t y = 0; y < height; ++y) wide[y] |= wide[y + 8];
  std::copy(wide + kBackLooking - kBefore, wide + height - kBefore, grown + kBackLooking);
}

/// The first `back_looking` pixels of every row look back to its beginning.
void look_back(const uint64_t* rows, uint64_t* grown, ptrdiff_t height, int back_looking) {
  const uint64_t mask = (uint64_t{1} << back_looking) - 1;
  for (ptrdiff_t y = 0; y < height; ++y) {
    uint64_t all = rows[y];  // 2, 4, 8, 16, 32 pixels up to x: more than ever look back
    all |= all << 1;
    all |= all << 2;
    all |= all << 4;
    all |= all << 8;
    all |= all << 16;
    grown[y] = (grown[y] & ~mask) | (all & mask);
  }
}

/// The bits behind the width become 0 again.
void cut(const BitRows& rows) {
  const int used = rows.width % BitRows::kBits;
  if (used == 0) return;
  uint64_t* last = rows.column(rows.columns() - 1);
  for (int y = 0; y < rows.height; ++y) last[y] &= (uint64_t{1} << used) - 1;
}

}  // namespace

size_t grow_near_room(int width, int height) {
  return BitRows::size(width, height) + 3 * static_cast<size_t>(height) + kBefore + kBehind;
}

void grow_near(const BitRows& mask, uint64_t* room) {
  const int columns = mask.columns();
  const ptrdiff_t height = mask.height;
  uint64_t* wide = room + (columns + 2) * height;
  // Columns without a pixel on both sides of the picture: there is nothing to look at.
  std::fill(room, room + height, uint64_t{0});
  std::fill(wide - height, wide, uint64_t{0});
  uint64_t* down = room + height;
  for (int j = 0; j < columns; ++j) grow_down(mask.column(j), down + j * height, wide, height);
  for (int j = 0; j < columns; ++j) {
    const uint64_t* word = down + j * height;
    kernels().face.widen_words(word - height, word, word + height, mask.column(j), height);
  }
  look_back(down, mask.column(0), height, mask.width <= kWhole ? kWhole : kBackLooking);
  cut(mask);
}

void grow_trailing(const BitRows& mask) {
  // The block is 3 x 3, but the fourth row and column still reach back to the first.
  constexpr int kFourth = 3;
  for (int j = mask.columns() - 1; j >= 0; --j) {
    uint64_t* word = mask.column(j);
    const uint64_t* before = j > 0 ? mask.column(j - 1) : nullptr;
    for (int y = 0; y < mask.height; ++y) {
      const uint64_t row = word[y];
      const uint64_t carried = before != nullptr ? before[y] >> 63 | before[y] >> 62 : (row & 1) << kFourth;
      word[y] = row | row << 1 | row << 2 | carried;
    }
    for (int y = mask.height - 1; y > 0; --y) {
      word[y] |= word[y - 1] | (y > 1 ? word[y - 2] : 0) | (y == kFourth ? word[0] : 0);
    }
  }
  cut(mask);
}

}  // namespace morvale
