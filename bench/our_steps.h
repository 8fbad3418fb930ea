/// Steps of the library that have no exported name of their own.
#pragma once

#include <cstdint>

#include "kernels/kernel_set.h"

namespace bench::our {

/// Bytes to network input.
inline void normalise(const uint8_t* bytes, float* floats, int count) {
  morvale::kernels().network.to_input(bytes, floats, count);
}

/// A label map into its five planes.
inline void split(const uint8_t* map, int cells, uint8_t* const (&planes)[5]) {
  morvale::kernels().network.split(map, planes, cells);
}

}  // namespace bench::our
