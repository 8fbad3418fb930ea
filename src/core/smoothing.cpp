#include <morvale/core/segmentation.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include <morvale/core/globals.h>
#include <morvale/core/morvale_core.h>
#include "core/frame_geometry.h"
#include "core/numeric.h"
#include "kernels/kernel_set.h"
#include "platform/clock.h"

namespace morvale {
namespace {

static_assert(kCellScores == kLabels);

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

/// The block converters work in eights and run past a count that is no multiple of eight.
int64_t whole_blocks(int64_t count) { return count < 1 ? 0 : (count + 7) / 8 * 8; }

}  // namespace
}  // namespace morvale

using namespace morvale;

uint8_t* segmetationIIR_Front(uint8_t* current, uint8_t* previous, void* /*unused*/, int frameCount) {
  return smooth(current, previous, frameCount, kernels().network.smooth_front);
}

uint8_t* segmetationIIR_Back(uint8_t* current, uint8_t* previous, void* /*unused*/, int frameCount) {
  return smooth(current, previous, frameCount, kernels().network.smooth_back);
}

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

int64_t currentTimeInMilliseconds() {
  const WallTime now = wall_time();
  return now.seconds * 1000 + now.microseconds / 1000;
}

int loadInputData(uint8_t* buffer, int /*size*/) {
  std::FILE* file = std::fopen("/data/vendor/camera/inarray.raw", "rb");
  if (file == nullptr) std::exit(1);
  const long length = std::fseek(file, 0, SEEK_END) == 0 ? std::ftell(file) : -1;
  if (length < 1) std::exit(1);
  std::rewind(file);
  if (std::fread(buffer, 1, static_cast<size_t>(length), file) != static_cast<size_t>(length)) std::exit(1);
  return std::fclose(file);
}

void MorvaleCore::dumpImage(const uint8_t* data, std::string path, int size) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(data), std::max(size, 0));
}
