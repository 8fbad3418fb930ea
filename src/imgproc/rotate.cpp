#include <morvale/imgproc/rotate.h>

#include <cstddef>
#include <cstdio>
#include <cstring>

#include "kernels/kernel_set.h"

namespace morvale {
namespace {

enum class Turn { kClockwise, kClockwiseMirrored, kCounterClockwise, kMirror, kHalf };

struct Size {
  int width, height;
};

/// A quarter turn is a transposition with the rows of one side or both taken from the last one up.
void turn_quarter(const uint8_t* src, uint8_t* dst, Size size, int sample, Turn turn) {
  ptrdiff_t src_stride = ptrdiff_t{size.width} * sample, dst_stride = ptrdiff_t{size.height} * sample;
  if (turn != Turn::kCounterClockwise) {
    src += (size.height - 1) * src_stride;
    src_stride = -src_stride;
  }
  if (turn != Turn::kClockwise) {
    dst += (size.width - 1) * dst_stride;
    dst_stride = -dst_stride;
  }
  const RotateBlocks& blocks = kernels().rotate;
  const auto transpose = sample == 1 ? blocks.transpose_bytes : blocks.transpose_pairs;
  transpose(src, src_stride, dst, dst_stride, size.width, size.height);
}

/// A plane of samples of one byte or two. Its rows are packed, so a half turn is all of it backwards.
void turn_samples(const uint8_t* src, uint8_t* dst, Size size, int sample, Turn turn) {
  const RotateBlocks& blocks = kernels().rotate;
  const ptrdiff_t stride = ptrdiff_t{size.width} * sample;
  if (turn == Turn::kHalf) {
    const auto reverse = sample == 1 ? blocks.reverse_bytes : blocks.reverse_pairs;
    reverse(src, dst, ptrdiff_t{size.width} * size.height);
  } else if (turn == Turn::kMirror) {
    for (ptrdiff_t y = 0; y < size.height; ++y) {
      std::memcpy(dst + (size.height - 1 - y) * stride, src + y * stride, static_cast<size_t>(stride));
    }
  } else {
    turn_quarter(src, dst, size, sample, turn);
  }
}

void turn_plane(const uint8_t* src, uint8_t* dst, Size size, Turn turn) {
  turn_samples(src, dst, size, 1, turn);
}

/// A pixel's place in the destination.
struct Place {
  int column, row;
};

/// The three ways in which a whole picture is turned.
Place destination(int x, int y, Size s, Turn turn) {
  const int right = s.width - 1 - x, up = s.height - 1 - y;
  if (turn == Turn::kClockwise) return {up, x};
  if (turn == Turn::kCounterClockwise) return {y, right};
  return {right, up};
}

/// Copies the chroma pair of every luma pixel, row by row. With odd sizes a pair is reached from several
/// source pairs, and this order decides which of them stays.
void turn_odd_chroma(const uint8_t* src, uint8_t* dst, Size size, Turn turn) {
  const ptrdiff_t stride = turn == Turn::kHalf ? size.width : size.height;
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
  if (size.width % 2 == 0 && size.height % 2 == 0) {
    // Every pair would be written four times with one value: once will do.
    turn_samples(src + luma_bytes, dst + luma_bytes, {size.width / 2, size.height / 2}, 2, turn);
  } else {
    turn_odd_chroma(src + luma_bytes, dst + luma_bytes, size, turn);
  }
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
  // The line is part of the interface, spelt like this.
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
