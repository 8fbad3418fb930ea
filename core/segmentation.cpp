#include "core/segmentation.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>

#include "core/frame_geometry.h"
#include "core/globals.h"
#include "core/morvale_core.h"
#include "core/numeric.h"
#include "core/segmentation_steps.h"
#include "platform/clock.h"

namespace morvale {
namespace {

/// The sum of differences is divided by kDivisor and kept as a byte. With 4 (front) it can reach 319, which
/// wraps to 63: a complete change of all five scores is then blended, not taken over. With 5 (back) it
/// cannot. Both are part of the output.
template <int kDivisor>
uint8_t* smooth(uint8_t* current, uint8_t* previous, int frame_count) {
  const int32_t cells = NETSIZE * NETSIZE;
  if (frame_count < 2) {
    std::memcpy(previous, current, static_cast<size_t>(cells) * kLabels);
    return current;
  }
  for (int32_t cell = 0; cell < cells; ++cell) {
    uint8_t* now = current + cell * kLabels;
    const uint8_t* before = previous + cell * kLabels;
    int difference = 0;
    for (int k = 0; k < kLabels; ++k) difference += std::abs(now[k] - before[k]);
    const auto change = static_cast<uint8_t>((difference + 2) / kDivisor);
    const int weight = std::max(256 - 2 * change, 0);
    for (int k = 0; k < kLabels; ++k) {
      now[k] = static_cast<uint8_t>((weight * before[k] + (256 - weight) * now[k]) >> 8);
    }
  }
  return current;
}

/// The block converters work in eights and run past a count that is no multiple of eight.
int64_t whole_blocks(int64_t count) { return count < 1 ? 0 : (count + 7) / 8 * 8; }

}  // namespace
}  // namespace morvale

using namespace morvale;

uint8_t* segmetationIIR_Front(uint8_t* current, uint8_t* previous, void* /*unused*/, int frameCount) {
  return smooth<4>(current, previous, frameCount);
}

uint8_t* segmetationIIR_Back(uint8_t* current, uint8_t* previous, void* /*unused*/, int frameCount) {
  return smooth<5>(current, previous, frameCount);
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
  const int64_t count = int64_t{NETSIZE} * channels * NETSIZE;
  for (int64_t i = 0; i < count; ++i) bytes[i] = score_byte(floats[i]);
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
