/// From a mask to the pixels that grow regions: those whose window holds any pixel of the mask. The windows
/// are rectangles, so they can be taken along rows and columns one after the other, 64 pixels at a time. They
/// are lopsided, which decides what regions touch; it stays.
#pragma once

#include <cstddef>
#include <cstdint>

#include "analysis/bit_rows.h"

namespace morvale {

/// Words of working memory that grow_near needs.
size_t grow_near_room(int width, int height);

/// In place, the near window: rows y-7 .. y+8 and columns x-7 .. x+8. While its far edge lies in the first 17
/// rows or columns it shrinks to rows 0 .. y or columns 0 .. x and does not look ahead.
void grow_near(const BitRows& mask, uint64_t* room);

/// In place, the trailing window: the 3 x 3 block that ends at (x, y). In the first four rows or columns it
/// reaches back to row 0 or column 0: row 3 still does, row 4 looks at rows 2 .. 4.
void grow_trailing(const BitRows& mask);

}  // namespace morvale
