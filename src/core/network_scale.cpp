/// Between pictures, the network's tensors and label maps: scales and sizes. Exported for callers; a frame
/// takes the same rules from kernels/network_rows.h and core/frame_geometry.h.
#include <morvale/core/globals.h>
#include <morvale/core/segmentation.h>
#include "core/frame_geometry.h"
#include "core/numeric.h"
#include "kernels/kernel_set.h"

namespace morvale {
namespace {

/// The block converters work in eights and run past a count that is no multiple of eight.
int64_t whole_blocks(int64_t count) { return count < 1 ? 0 : (count + 7) / 8 * 8; }

}  // namespace
}  // namespace morvale

using namespace morvale;

uint8_t* normalizeInput(uint8_t* bytes, float* floats, int n) {
  constexpr float kScale = 1.0f / 127.5f;  // the nearest float; a decimal literal easily names its neighbour
  const int64_t count = whole_blocks(int64_t{3} * n * n);
  for (int64_t i = 0; i < count; ++i) floats[i] = static_cast<float>(bytes[i]) * kScale - 1.0f;
  return bytes;
}

float* normalizeOutput(float* floats, uint8_t* bytes, int n) {
  const int64_t count = whole_blocks(int64_t{2} * n * n);
  for (int64_t i = 0; i < count; ++i) bytes[i] = static_cast<uint8_t>(to_int32((floats[i] + 10.0f) * 12.75f));
  return floats;
}

int getOutputArr(float* floats, uint8_t* bytes, int channels) {
  kernels().network.to_bytes(floats, bytes, ptrdiff_t{NETSIZE} * channels * NETSIZE);
  return 0;
}

void calcSegFactor(int a, int b, int& first, int& second, int& factor) {
  const FrameGeometry geometry = frame_geometry(a, b, PADSIZE);
  first = geometry.height;
  second = geometry.width;
  factor = geometry.seg_factor;
}
