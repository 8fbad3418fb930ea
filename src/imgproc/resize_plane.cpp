#include <morvale/imgproc/resize_plane.h>

#include <array>
#include <cstddef>
#include <cstring>

#include "imgproc/resample.h"
#include "kernels/kernel_set.h"

namespace morvale {
namespace {

/// One of the outputs between two neighbours a and b: (left * a + right * b + rounding) >> 8. All the
/// enlargers but the twofold one are tables of these.
struct Blend {
  int left, right, rounding;

  uint8_t operator()(int a, int b) const {
    return static_cast<uint8_t>((left * a + right * b + rounding) >> 8);
  }
};

// A full weight of 256 does not fit a byte, so the first output of each group is a 255 : 1 blend of its
// neighbours, not a copy. The output depends on it.
constexpr std::array<Blend, 6> kSixfold = {
    {{255, 1, 0}, {213, 43, 0}, {171, 85, 0}, {128, 128, 0}, {85, 171, 0}, {43, 213, 0}}};
constexpr std::array<Blend, 8> kEightfold = {{{255, 1, 0},
                                              {224, 32, 0},
                                              {192, 64, 0},
                                              {160, 96, 0},
                                              {128, 128, 0},
                                              {96, 160, 0},
                                              {64, 192, 0},
                                              {32, 224, 0}}};
constexpr int kMaxFactor = 64;

struct Blends {
  const Blend* table;
  int factor;
};

/// One row, `factor` outputs per source pixel; the last pixel is repeated.
void enlarge_row(const uint8_t* src, uint8_t* dst, int width, Blends blends) {
  for (int i = 0; i + 1 < width; ++i) {
    for (int k = 0; k < blends.factor; ++k) *dst++ = blends.table[k](src[i], src[i + 1]);
  }
  std::memset(dst, src[width - 1], static_cast<size_t>(blends.factor));
}

void blend_rows(const uint8_t* above, const uint8_t* below, uint8_t* dst, ptrdiff_t n, Blend blend) {
  for (ptrdiff_t x = 0; x < n; ++x) dst[x] = blend(above[x], below[x]);
}

/// First all rows to the right, then between them downwards, in place. Rows factor * j stay as the first pass
/// left them; the rows behind the last of them copy it.
void enlarge_plane(const uint8_t* src, uint8_t* dst, int width, int height, Blends blends) {
  if (width < 1 || height < 1) return;
  const int factor = blends.factor;
  const ptrdiff_t stride = static_cast<ptrdiff_t>(width) * factor;
  for (int j = 0; j < height; ++j) {
    enlarge_row(src + static_cast<ptrdiff_t>(j) * width, dst + j * factor * stride, width, blends);
  }
  for (int j = 0; j < height; ++j) {
    uint8_t* above = dst + j * factor * stride;
    for (int k = 1; k < factor; ++k) {
      if (j + 1 < height) {
        blend_rows(above, above + factor * stride, above + k * stride, stride, blends.table[k]);
      } else {
        std::memcpy(above + k * stride, above, static_cast<size_t>(stride));
      }
    }
  }
}

}  // namespace
}  // namespace morvale

using namespace morvale;

void resize_Y_1(const uint8_t* src, uint8_t* dst, int srcWidth, int srcHeight, int dstWidth, int dstHeight) {
  if (dstWidth < 1 || dstHeight < 1) return;
  resample<1>({src, srcWidth}, {dst, dstWidth, dstHeight},
              {q8_step(srcWidth, dstWidth), q8_step(srcHeight, dstHeight)});
}

void resize_y_4x_up(const uint8_t* src, uint8_t* dst, int width, int height) {
  if (width < 1 || height < 1) return;
  const PlaneRows& rows = kernels().plane;
  const ptrdiff_t stride = ptrdiff_t{4} * width;
  for (ptrdiff_t j = 0; j < height; ++j) {
    uint8_t* row = dst + 4 * j * stride;
    rows.quadruple_row(src + j * width, row, width);
    // The rows between follow at once, while both their neighbours are near.
    if (j > 0) rows.quarter_rows(row - 4 * stride, row, row - 3 * stride, stride, stride);
  }
  uint8_t* last = dst + 4 * (height - ptrdiff_t{1}) * stride;
  for (ptrdiff_t k = 1; k < 4; ++k) std::memcpy(last + k * stride, last, static_cast<size_t>(stride));
}

void resize_y_6x_up(const uint8_t* src, uint8_t* dst, int width, int height) {
  enlarge_plane(src, dst, width, height, {kSixfold.data(), 6});
}

void resize_y(const uint8_t* src, uint8_t* dst, int width, int height, int factor) {
  if (factor < 1 || factor > kMaxFactor) return;
  std::array<Blend, kMaxFactor> table;
  for (int k = 0; k < factor; ++k)
    table[static_cast<size_t>(k)] = {256 * (factor - k) / factor, 256 * k / factor, 1};
  table[0] = {255, 1, 1};
  enlarge_plane(src, dst, width, height, {table.data(), factor});
}

void resize_y_2x_up(const uint8_t* src, uint8_t* dst, int width, int height) {
  // Twofold has no 255 : 1 blend: its even outputs are copies, which a full weight of 256 gives here.
  constexpr std::array<Blend, 2> kTwofold = {{{256, 0, 0}, {128, 128, 128}}};
  enlarge_plane(src, dst, width, height, {kTwofold.data(), 2});
}

void resize_y_8x_up_RR_hori(const uint8_t* src, uint8_t* dst, int srcStride, int x, int y, int width,
                            int height, int dstStride) {
  if (width < 1 || height < 1) return;
  for (ptrdiff_t j = 0; j < height; ++j) {
    enlarge_row(src + (y + j) * srcStride + x, dst + j * dstStride, width, {kEightfold.data(), 8});
  }
}

void resize_y_8x_up_RR_vert(const uint8_t* src, uint8_t* dst, int srcStride, int x, int y, int width,
                            int height, int dstStride) {
  if (width < 1 || height < 1) return;
  const ptrdiff_t stride = dstStride;
  for (ptrdiff_t j = 0; j < height; ++j) {
    const uint8_t* above = src + (y + j) * srcStride + x;
    for (ptrdiff_t k = 0; k < 8; ++k) {
      uint8_t* out = dst + (8 * j + k) * stride;
      if (j + 1 < height) {
        blend_rows(above, above + srcStride, out, width, kEightfold[static_cast<size_t>(k)]);
      } else {
        std::memcpy(out, above, static_cast<size_t>(width));
      }
    }
  }
}
