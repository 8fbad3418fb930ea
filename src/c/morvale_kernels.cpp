/// The kernels under C names: one call of the checked kernel each, and nothing else. What is too short or
/// wrong is the check's to say.
#include <morvale/morvale_kernels.h>

#include <span>

#include <morvale/checked.h>
#include "kernels/kernel_set.h"

namespace {

namespace checked = morvale::checked;
using checked::Status;

static_assert(MORVALE_OK == static_cast<int>(Status::kOk) &&
              MORVALE_BAD_SIZE == static_cast<int>(Status::kBadSize) &&
              MORVALE_SOURCE_TOO_SMALL == static_cast<int>(Status::kSourceTooSmall) &&
              MORVALE_DESTINATION_TOO_SMALL == static_cast<int>(Status::kDestinationTooSmall));

morvale_status in_c(Status status) { return static_cast<morvale_status>(status); }

template <class T>
std::span<T> buffer(T* first, size_t bytes) {
  return {first, first == nullptr ? 0 : bytes / sizeof(T)};
}

}  // namespace

const char* morvale_status_text(int status) { return checked::message(static_cast<Status>(status)); }
const char* morvale_kernels_version() { return MORVALE_KERNELS_VERSION; }
const char* morvale_kernels_set() { return morvale::kernels().name.data(); }

morvale_status morvale_NV21toRGB(const uint8_t* luma, size_t luma_bytes, const uint8_t* vu, size_t vu_bytes,
                                 uint8_t* rgb, size_t rgb_bytes, int width, int height) {
  return in_c(checked::NV21toRGB(buffer(luma, luma_bytes), buffer(vu, vu_bytes), buffer(rgb, rgb_bytes),
                                 width, height));
}

morvale_status morvale_NV21toBGR(const uint8_t* nv21, size_t nv21_bytes, uint8_t* bgr, size_t bgr_bytes,
                                 int width, int height) {
  return in_c(checked::NV21toBGR(buffer(nv21, nv21_bytes), buffer(bgr, bgr_bytes), width, height));
}

morvale_status morvale_NV21toBGR_planar(const uint8_t* nv21, size_t nv21_bytes, uint8_t* blue,
                                        size_t blue_bytes, uint8_t* green, size_t green_bytes, uint8_t* red,
                                        size_t red_bytes, int width, int height) {
  return in_c(checked::NV21toBGR_planar(
      buffer(nv21, nv21_bytes),
      {buffer(blue, blue_bytes), buffer(green, green_bytes), buffer(red, red_bytes)}, width, height));
}

morvale_status morvale_NV21toRGB_pad(const uint8_t* src, size_t src_bytes, uint8_t* dst, size_t dst_bytes,
                                     int width, int height, int outWidth, int outHeight, int rightMargin,
                                     int bottomMargin) {
  return in_c(checked::NV21toRGB_pad(buffer(src, src_bytes), buffer(dst, dst_bytes), width, height, outWidth,
                                     outHeight, rightMargin, bottomMargin));
}

morvale_status morvale_NV21toBGR_pad(const uint8_t* src, size_t src_bytes, uint8_t* dst, size_t dst_bytes,
                                     int width, int height, int outWidth, int outHeight, int rightMargin,
                                     int bottomMargin) {
  return in_c(checked::NV21toBGR_pad(buffer(src, src_bytes), buffer(dst, dst_bytes), width, height, outWidth,
                                     outHeight, rightMargin, bottomMargin));
}

morvale_status morvale_NV12toRGB_pad(const uint8_t* src, size_t src_bytes, uint8_t* dst, size_t dst_bytes,
                                     int width, int height, int outWidth, int outHeight, int rightMargin,
                                     int bottomMargin) {
  return in_c(checked::NV12toRGB_pad(buffer(src, src_bytes), buffer(dst, dst_bytes), width, height, outWidth,
                                     outHeight, rightMargin, bottomMargin));
}

morvale_status morvale_NV21toBGR_pad_lsi(const uint8_t* src, size_t src_bytes, uint8_t* dst, size_t dst_bytes,
                                         int width, int height, int outWidth, int outHeight, int rightMargin,
                                         int bottomMargin) {
  return in_c(checked::NV21toBGR_pad_lsi(buffer(src, src_bytes), buffer(dst, dst_bytes), width, height,
                                         outWidth, outHeight, rightMargin, bottomMargin));
}

morvale_status morvale_RGBtoNV21(const uint8_t* rgb, size_t rgb_bytes, uint8_t* luma, size_t luma_bytes,
                                 uint8_t* vu, size_t vu_bytes, int width, int height) {
  return in_c(checked::RGBtoNV21(buffer(rgb, rgb_bytes), buffer(luma, luma_bytes), buffer(vu, vu_bytes),
                                 width, height));
}

morvale_status morvale_BGRtoNV21(const uint8_t* bgr, size_t bgr_bytes, uint8_t* nv21, size_t nv21_bytes,
                                 int width, int height) {
  return in_c(checked::BGRtoNV21(buffer(bgr, bgr_bytes), buffer(nv21, nv21_bytes), width, height));
}

morvale_status morvale_BGR2GRAY(const uint8_t* bgr, size_t bgr_bytes, uint8_t* grey, size_t grey_bytes,
                                int width, int height) {
  return in_c(checked::BGR2GRAY(buffer(bgr, bgr_bytes), buffer(grey, grey_bytes), width, height));
}

morvale_status morvale_BGR2HSV(const uint8_t* bgr, size_t bgr_bytes, float* hsv, size_t hsv_bytes, int width,
                               int height) {
  return in_c(checked::BGR2HSV(buffer(bgr, bgr_bytes), buffer(hsv, hsv_bytes), width, height));
}

morvale_status morvale_resize_NV21_opt(const uint8_t* luma, size_t luma_bytes, const uint8_t* vu,
                                       size_t vu_bytes, uint8_t* dst, size_t dst_bytes, int srcWidth,
                                       int srcHeight, int dstWidth, int dstHeight) {
  return in_c(checked::resize_NV21_opt(buffer(luma, luma_bytes), buffer(vu, vu_bytes), buffer(dst, dst_bytes),
                                       srcWidth, srcHeight, dstWidth, dstHeight));
}

morvale_status morvale_resize_NV21(const uint8_t* src, size_t src_bytes, uint8_t* dst, size_t dst_bytes,
                                   int srcWidth, int srcHeight, int dstWidth, int dstHeight) {
  return in_c(checked::resize_NV21(buffer(src, src_bytes), buffer(dst, dst_bytes), srcWidth, srcHeight,
                                   dstWidth, dstHeight));
}

morvale_status morvale_resize_NV21_2x_up(const uint8_t* src, size_t src_bytes, uint8_t* dst, size_t dst_bytes,
                                         int width, int height) {
  return in_c(checked::resize_NV21_2x_up(buffer(src, src_bytes), buffer(dst, dst_bytes), width, height));
}

morvale_status morvale_resize_NV21_2x_down(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                           size_t dst_bytes, int width, int height) {
  return in_c(checked::resize_NV21_2x_down(buffer(src, src_bytes), buffer(dst, dst_bytes), width, height));
}

morvale_status morvale_resize_NV21_3x_down(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                           size_t dst_bytes, int width, int height) {
  return in_c(checked::resize_NV21_3x_down(buffer(src, src_bytes), buffer(dst, dst_bytes), width, height));
}

morvale_status morvale_resize_Y_1(const uint8_t* src, size_t src_bytes, uint8_t* dst, size_t dst_bytes,
                                  int srcWidth, int srcHeight, int dstWidth, int dstHeight) {
  return in_c(checked::resize_Y_1(buffer(src, src_bytes), buffer(dst, dst_bytes), srcWidth, srcHeight,
                                  dstWidth, dstHeight));
}

morvale_status morvale_resize_y_2x_up(const uint8_t* src, size_t src_bytes, uint8_t* dst, size_t dst_bytes,
                                      int width, int height) {
  return in_c(checked::resize_y_2x_up(buffer(src, src_bytes), buffer(dst, dst_bytes), width, height));
}

morvale_status morvale_resize_y_4x_up(const uint8_t* src, size_t src_bytes, uint8_t* dst, size_t dst_bytes,
                                      int width, int height) {
  return in_c(checked::resize_y_4x_up(buffer(src, src_bytes), buffer(dst, dst_bytes), width, height));
}

morvale_status morvale_resize_y_6x_up(const uint8_t* src, size_t src_bytes, uint8_t* dst, size_t dst_bytes,
                                      int width, int height) {
  return in_c(checked::resize_y_6x_up(buffer(src, src_bytes), buffer(dst, dst_bytes), width, height));
}

morvale_status morvale_resize_y(const uint8_t* src, size_t src_bytes, uint8_t* dst, size_t dst_bytes,
                                int width, int height, int factor) {
  return in_c(checked::resize_y(buffer(src, src_bytes), buffer(dst, dst_bytes), width, height, factor));
}

morvale_status morvale_resize_y_8x_up_RR_hori(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                              size_t dst_bytes, int srcStride, int x, int y, int width,
                                              int height, int dstStride) {
  return in_c(checked::resize_y_8x_up_RR_hori(buffer(src, src_bytes), buffer(dst, dst_bytes), srcStride, x, y,
                                              width, height, dstStride));
}

morvale_status morvale_resize_y_8x_up_RR_vert(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                              size_t dst_bytes, int srcStride, int x, int y, int width,
                                              int height, int dstStride) {
  return in_c(checked::resize_y_8x_up_RR_vert(buffer(src, src_bytes), buffer(dst, dst_bytes), srcStride, x, y,
                                              width, height, dstStride));
}

morvale_status morvale_rotate_y(const uint8_t* src, size_t src_bytes, uint8_t* dst, size_t dst_bytes,
                                int width, int height, int mode) {
  return in_c(checked::rotate_y(buffer(src, src_bytes), buffer(dst, dst_bytes), width, height, mode));
}

morvale_status morvale_rotate_y_opt(const uint8_t* src, size_t src_bytes, uint8_t* dst, size_t dst_bytes,
                                    int width, int height, int mode) {
  return in_c(checked::rotate_y_opt(buffer(src, src_bytes), buffer(dst, dst_bytes), width, height, mode));
}

morvale_status morvale_rotate_NV21(const uint8_t* src, size_t src_bytes, uint8_t* dst, size_t dst_bytes,
                                   int width, int height, int mode) {
  return in_c(checked::rotate_NV21(buffer(src, src_bytes), buffer(dst, dst_bytes), width, height, mode));
}

morvale_status morvale_rotate_NV21_opt(const uint8_t* src, size_t src_bytes, uint8_t* dst, size_t dst_bytes,
                                       int width, int height, int mode) {
  return in_c(checked::rotate_NV21_opt(buffer(src, src_bytes), buffer(dst, dst_bytes), width, height, mode));
}

morvale_status morvale_GFilterCreation(float sigma, int radius, int bits, uint16_t* weights,
                                       size_t weights_bytes) {
  return in_c(checked::GFilterCreation(sigma, radius, bits, buffer(weights, weights_bytes)));
}

morvale_status morvale_GaussianBlur_Grid_Hori(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                              size_t dst_bytes, const uint8_t* grid, size_t grid_bytes,
                                              int width, int height, const uint16_t* weights,
                                              size_t weights_bytes, int radius, int bits) {
  return in_c(checked::GaussianBlur_Grid_Hori(buffer(src, src_bytes), buffer(dst, dst_bytes),
                                              buffer(grid, grid_bytes), width, height,
                                              buffer(weights, weights_bytes), radius, bits));
}

morvale_status morvale_GaussianBlur_Grid_Vert(const uint8_t* src, size_t src_bytes, uint8_t* dst,
                                              size_t dst_bytes, const uint8_t* grid, size_t grid_bytes,
                                              int width, int height, const uint16_t* weights,
                                              size_t weights_bytes, int radius, int bits) {
  return in_c(checked::GaussianBlur_Grid_Vert(buffer(src, src_bytes), buffer(dst, dst_bytes),
                                              buffer(grid, grid_bytes), width, height,
                                              buffer(weights, weights_bytes), radius, bits));
}
