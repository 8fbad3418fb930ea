/// From a mask to the pixels that grow regions: those whose window (analysis/region_labeller.h) holds any
/// pixel of the mask. The windows are rectangles, so they can be taken along rows and columns one after the
/// other, 64 pixels at a time.
#pragma once

#include <cstddef>
#include <cstdint>

#include "analysis/bit_rows.h"

namespace morvale {

/// Words of working memory that grow_near needs.
size_t grow_near_room(int width, int height);

/// In place: bit (x, y) becomes near_window(x, y) >= 1.
void grow_near(const BitRows& mask, uint64_t* room);

/// In place: bit (x, y) becomes trailing_window(x, y) >= 1.
void grow_trailing(const BitRows& mask);

}  // namespace morvale
