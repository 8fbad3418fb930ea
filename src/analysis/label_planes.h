/// Splitting of interleaved label maps into one plane per label.
#pragma once

#include <cstddef>
#include <cstdint>

#include <morvale/core/globals.h>

namespace morvale {

/// planes[k][p] = map[kLabels * p + k] for every cell p and every given plane. A sixth plane receives the
/// first byte of the following cell.
template <size_t kPlanes>
void split_labels(const uint8_t* map, ptrdiff_t cells, uint8_t* const (&planes)[kPlanes]) {
  for (ptrdiff_t p = 0; p < cells; ++p) {
    for (size_t k = 0; k < kPlanes; ++k) planes[k][p] = map[kLabels * p + static_cast<ptrdiff_t>(k)];
  }
}

}  // namespace morvale
