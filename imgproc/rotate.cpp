#include "imgproc/rotate.h"

#include <cstddef>
#include <cstdio>
#include <cstring>

namespace morvale {
namespace {

enum class Turn { kClockwise, kClockwiseMirrored, kCounterClockwise, kMirror, kHalf };

struct Size {
  int width, height;
};

/// A pixel's place in the destination.
struct Place {
  int column, row;
};

Size turned(Size s, Turn turn) {
  const bool upright = turn == Turn::kMirror || turn == Turn::kHalf;
  return upright ? s : Size{s.height, s.width};
}

Place destination(int x, int y, Size s, Turn turn) {
  const int right = s.width - 1 - x, up = s.height - 1 - y;
  switch (turn) {
    case Turn::kClockwise:
      return {up, x};
    case Turn::kClockwiseMirrored:
      return {up, right};
    case Turn::kCounterClockwise:
      return {y, right};
    case Turn::kMirror:
      return {x, up};
    case Turn::kHalf:
      break;
  }
  return {right, up};
}

void turn_plane(const uint8_t* src, uint8_t* dst, Size size, Turn turn) {
  const ptrdiff_t stride = turned(size, turn).width;
  for (int y = 0; y < size.height; ++y) {
    for (int x = 0; x < size.width; ++x) {
      const Place to = destination(x, y, size, turn);
      dst[to.row * stride + to.column] = *src++;
    }
  }
}

/// Copies the chroma pair of every luma pixel, row by row. Even sizes write each pair four times with one
/// value; with odd sizes this order decides which pair stays.
void turn_chroma(const uint8_t* src, uint8_t* dst, Size size, Turn turn) {
  const ptrdiff_t stride = turned(size, turn).width;
  for (int y = 0; y < size.height; ++y) {
    const uint8_t* row = src + static_cast<ptrdiff_t>(y / 2) * size.width;
    for (int x = 0; x < size.width; ++x) {
      const Place to = destination(x, y, size, turn);
      std::memcpy(dst + to.row / 2 * stride + (to.column & ~1), row + (x & ~1), 2);
    }
  }
}

void turn_nv21(const uint8_t* src, uint8_t* dst, Size size, Turn turn) {
  turn_plane(src, dst, size, turn);
  const ptrdiff_t luma_bytes = static_cast<ptrdiff_t>(size.width) * size.height;
  turn_chroma(src + luma_bytes, dst + luma_bytes, size, turn);
}

Turn plane_turn(int mode, Turn third) {
  return mode == 0 ? Turn::kClockwiseMirrored : mode == 2 ? Turn::kCounterClockwise : third;
}

bool empty(Size s) { return s.width < 1 || s.height < 1; }

}  // namespace
}  // namespace morvale

using namespace morvale;

void rotate_y(const uint8_t* src, uint8_t* dst, int width, int height, int mode) {
  const Size size{width, height};
  if (!empty(size)) turn_plane(src, dst, size, plane_turn(mode, Turn::kMirror));
}

void rotate_y_opt(const uint8_t* src, uint8_t* dst, int width, int height, int mode) {
  const Size size{width, height};
  const Turn turn = plane_turn(mode, Turn::kHalf);
  // Callers' test benches look for this line, spelt like this.
  if (turn == Turn::kHalf)
    std::puts("roatetasdf asd 180.....................................................");
  if (!empty(size)) turn_plane(src, dst, size, turn);
}

void rotate_NV21(const uint8_t* src, uint8_t* dst, int width, int height, int mode) {
  const Size size{width, height};
  if (empty(size)) return;
  turn_nv21(src, dst, size, mode == 0 ? Turn::kClockwise : mode == 2 ? Turn::kCounterClockwise : Turn::kHalf);
}

void rotate_NV21_opt(const uint8_t* src, uint8_t* dst, int width, int height, int mode) {
  rotate_NV21(src, dst, width, height, mode);
}
