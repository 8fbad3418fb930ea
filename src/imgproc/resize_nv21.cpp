#include <morvale/imgproc/resize_nv21.h>

#include <cstddef>
#include <cstring>

#include "imgproc/resample.h"
#include "imgproc/scale_nv21.h"

namespace morvale {

void scale_nv21(const SourcePlane& luma, const SourcePlane& chroma, uint8_t* dst, int srcWidth, int srcHeight,
                int dstWidth, int dstHeight) {
  const Steps step{q8_step(srcWidth, dstWidth), q8_step(srcHeight, dstHeight)};
  resample<1>(luma, {dst, dstWidth, dstHeight}, step);
  if (dstHeight < 2 || dstWidth < 1) return;
  resample<2>(chroma, {dst + static_cast<ptrdiff_t>(dstWidth) * dstHeight, dstWidth, dstHeight / 2}, step);
}

namespace {

/// The chroma of an NV21 image of these sizes: where its plane begins, and its whole pairs and rows.
struct Chroma {
  Chroma(int width, int height)
      : offset(static_cast<ptrdiff_t>(width) * height), pairs(width / 2), rows(height / 2) {}
  ptrdiff_t offset;
  int pairs, rows;
};

uint8_t mean(int a, int b) { return static_cast<uint8_t>((a + b + 1) >> 1); }

/// One row at twice the width: copies at even samples, rounded means between, the last sample repeated.
template <int kChannels>
void double_row(const uint8_t* src, uint8_t* dst, int columns) {
  for (int x = 0; x < columns; ++x) {
    const int next = x + 1 < columns ? kChannels : 0;
    for (int k = 0; k < kChannels; ++k) {
      const uint8_t* s = src + kChannels * x + k;
      uint8_t* d = dst + kChannels * 2 * x + k;
      d[0] = s[0];
      d[kChannels] = mean(s[0], s[next]);
    }
  }
}

/// Fills each odd row with the rounded mean of its neighbours; the last one copies the row above.
void fill_odd_rows(uint8_t* dst, ptrdiff_t stride, int rows) {
  for (int y = 1; y < rows; y += 2) {
    const uint8_t* above = dst + (y - 1) * stride;
    const uint8_t* below = y + 1 < rows ? above + 2 * stride : above;
    uint8_t* row = dst + y * stride;
    for (ptrdiff_t x = 0; x < stride; ++x) row[x] = mean(above[x], below[x]);
  }
}

/// Every second sample of every second row.
template <int kChannels>
void take_every_second(const uint8_t* src, ptrdiff_t src_stride, uint8_t* dst, ptrdiff_t dst_stride,
                       int columns, int rows) {
  for (int y = 0; y < rows; ++y) {
    for (int x = 0; x < columns; ++x) {
      std::memcpy(dst + y * dst_stride + kChannels * x, src + 2 * y * src_stride + kChannels * 2 * x,
                  kChannels);
    }
  }
}

/// The rounded mean of every 3 x 3 block.
template <int kChannels>
void average_threes(const uint8_t* src, ptrdiff_t src_stride, uint8_t* dst, ptrdiff_t dst_stride, int columns,
                    int rows) {
  for (int y = 0; y < rows; ++y) {
    for (int x = 0; x < columns; ++x) {
      for (int k = 0; k < kChannels; ++k) {
        const uint8_t* block = src + 3 * y * src_stride + kChannels * 3 * x + k;
        int sum = 0;
        for (int i = 0; i < 9; ++i) sum += block[i / 3 * src_stride + i % 3 * kChannels];
        dst[y * dst_stride + kChannels * x + k] = static_cast<uint8_t>((sum + 4) / 9);
      }
    }
  }
}

}  // namespace
}  // namespace morvale

using namespace morvale;

void resize_NV21_opt(const uint8_t* luma, const uint8_t* vu, uint8_t* dst, int srcWidth, int srcHeight,
                     int dstWidth, int dstHeight) {
  scale_nv21({luma, srcWidth}, {vu, srcWidth}, dst, srcWidth, srcHeight, dstWidth, dstHeight);
}

void resize_NV21(const uint8_t* src, uint8_t* dst, int srcWidth, int srcHeight, int dstWidth, int dstHeight) {
  resize_NV21_opt(src, src + static_cast<ptrdiff_t>(srcWidth) * srcHeight, dst, srcWidth, srcHeight, dstWidth,
                  dstHeight);
}

void resize_NV21_2x_up(const uint8_t* src, uint8_t* dst, int width, int height) {
  if (width < 1 || height < 1) return;
  const ptrdiff_t stride = width;
  for (int y = 0; y < height; ++y) double_row<1>(src + y * stride, dst + 4 * y * stride, width);
  fill_odd_rows(dst, 2 * stride, 2 * height);

  const Chroma from(width, height), to(2 * width, 2 * height);
  if (from.pairs < 1 || from.rows < 1) return;
  const uint8_t* vu = src + from.offset;
  uint8_t* out = dst + to.offset;
  for (int y = 0; y < from.rows; ++y) {
    uint8_t* row = out + 4 * y * stride;
    double_row<2>(vu + y * stride, row, from.pairs);
    if (width & 1) std::memcpy(row + 2 * width - 2, row + 2 * width - 4, 2);
  }
  fill_odd_rows(out, 2 * stride, 2 * from.rows);
}

void resize_NV21_2x_down(const uint8_t* src, uint8_t* dst, int width, int height) {
  if (width < 2 || height < 2) return;
  take_every_second<1>(src, width, dst, width / 2, width / 2, height / 2);
  const Chroma from(width, height), to(width / 2, height / 2);
  take_every_second<2>(src + from.offset, width, dst + to.offset, width / 2, to.pairs, to.rows);
}

void resize_NV21_3x_down(const uint8_t* src, uint8_t* dst, int width, int height) {
  if (width < 3 || height < 3) return;
  average_threes<1>(src, width, dst, width / 3, width / 3, height / 3);
  const Chroma from(width, height), to(width / 3, height / 3);
  average_threes<2>(src + from.offset, width, dst + to.offset, width / 3, to.pairs, to.rows);
}
