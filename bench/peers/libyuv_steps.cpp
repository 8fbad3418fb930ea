#include "bench/peers/libyuv_steps.h"

namespace bench::yuv {

void nv21_to_rgb(const uint8_t* nv21, uint8_t* rgb, int width, int height) {
  // RGB in memory from V,U pairs: the library's own NV21ToRAW does this with the studio-range constants.
  libyuv::NV12ToRGB24Matrix(nv21, width, nv21 + width * height, width, rgb, 3 * width,
                            &libyuv::kYvuJPEGConstants, width, height);
}

void nv21_to_rgb_padded(const uint8_t* nv21, uint8_t* rgb, int width, int height, int margin) {
  nv21_to_rgb(nv21, rgb, width, height);
  const int row = 3 * width;
  libyuv::CopyPlane(rgb + (height - margin) * row, row, rgb + height * row, row, row, -margin);
}

void shrink(const uint8_t* nv21, int width, int height, uint8_t* dst, int dst_width, int dst_height,
            libyuv::FilterMode filter) {
  libyuv::ScalePlane(nv21, width, width, height, dst, dst_width, dst_width, dst_height, filter);
  libyuv::UVScale(nv21 + width * height, width, width / 2, height / 2, dst + dst_width * dst_height,
                  dst_width, dst_width / 2, dst_height / 2, filter);
}

void enlarge(const uint8_t* plane, int width, int height, uint8_t* dst, int factor) {
  libyuv::ScalePlane(plane, width, width, height, dst, factor * width, factor * width, factor * height,
                     libyuv::kFilterBilinear);
}

void quadruple(const uint8_t* plane, int width, int height, Bytes& half, uint8_t* dst) {
  half.resize(static_cast<size_t>(4 * width * height));
  enlarge(plane, width, height, half.data(), 2);
  enlarge(half.data(), 2 * width, 2 * height, dst, 2);
}

}  // namespace bench::yuv
