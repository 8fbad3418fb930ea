/// The temporal smoothing of label maps.
#include <cstring>

#include <morvale/core/globals.h>
#include <morvale/core/segmentation.h>
#include "kernels/kernel_set.h"

namespace morvale {
namespace {

using SmoothCells = void (*)(uint8_t* now, const uint8_t* before, ptrdiff_t cells);

/// Without a second frame to blend with, the map becomes the next frame's partner as it is.
uint8_t* smooth(uint8_t* current, uint8_t* previous, int frame_count, SmoothCells smooth_cells) {
  const int32_t cells = NETSIZE * NETSIZE;
  if (frame_count < 2) {
    std::memcpy(previous, current, static_cast<size_t>(cells) * kLabels);
  } else {
    smooth_cells(current, previous, cells);
  }
  return current;
}

}  // namespace
}  // namespace morvale

using namespace morvale;

uint8_t* segmetationIIR_Front(uint8_t* current, uint8_t* previous, void* /*unused*/, int frameCount) {
  return smooth(current, previous, frameCount, kernels().network.smooth_front);
}

uint8_t* segmetationIIR_Back(uint8_t* current, uint8_t* previous, void* /*unused*/, int frameCount) {
  return smooth(current, previous, frameCount, kernels().network.smooth_back);
}
