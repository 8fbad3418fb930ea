#include <memory>

#include "bench/floor.h"
#include "bench/job.h"
#include "bench/peers/libyuv_steps.h"
#include "bench/peers/opencv_steps.h"
#include "bench/pictures.h"
#include "kernel_list/kernel_list.h"

namespace bench {
namespace {

constexpr int kWidth = 1920, kHeight = 1080;
constexpr int kLuma = kWidth * kHeight;

/// Modes of the rotations: a quarter turn counter-clockwise, and a half turn.
constexpr int kQuarter = 2, kHalf = 3;

template <class Call>
Way with(Call call) {
  return [=]() -> Work {
    const auto source = std::make_shared<Bytes>(nv21_picture(kWidth, kHeight, 1));
    const auto target = std::make_shared<Bytes>(source->size());
    return [=] { call(source->data(), target->data()); };
  };
}

void opencv_turn(const uint8_t* s, uint8_t* d, int divisor, int type, cv::RotateFlags turn) {
  const int w = kWidth / divisor, h = kHeight / divisor;
  const bool upright = turn == cv::ROTATE_180;
  cv::Mat target = ocv::over(d, upright ? h : w, upright ? w : h, type);
  cv::rotate(ocv::over(s, h, w, type), target, turn);
}

void libyuv_luma(const uint8_t* s, uint8_t* d, libyuv::RotationMode mode) {
  const int stride = mode == libyuv::kRotate180 ? kWidth : kHeight;
  libyuv::RotatePlane(s, kWidth, d, stride, kWidth, kHeight, mode);
}

/// libyuv turns no interleaved chroma by a quarter: split while turning, then merge.
Way libyuv_nv21_quarter() {
  const auto planes = std::make_shared<Bytes>(kLuma / 2);
  return with([=](const uint8_t* s, uint8_t* d) {
    constexpr int w = kWidth / 2, h = kHeight / 2;
    uint8_t *first = planes->data(), *second = first + w * h;
    libyuv_luma(s, d, libyuv::kRotate270);
    libyuv::SplitRotateUV(s + kLuma, kWidth, first, h, second, h, w, h, libyuv::kRotate270);
    libyuv::MergeUVPlane(first, h, second, h, d + kLuma, kHeight, h, w);
  });
}

/// Or take the pairs as 16-bit pixels.
Way libyuv_nv21_quarter_16() {
  return with([](const uint8_t* s, uint8_t* d) {
    constexpr int w = kWidth / 2, h = kHeight / 2;
    libyuv_luma(s, d, libyuv::kRotate270);
    libyuv::RotatePlane_16(reinterpret_cast<const uint16_t*>(s + kLuma), w,
                           reinterpret_cast<uint16_t*>(d + kLuma), h, w, h, libyuv::kRotate270);
  });
}

Way libyuv_nv21_half() {
  return with([](const uint8_t* s, uint8_t* d) {
    libyuv_luma(s, d, libyuv::kRotate180);
    libyuv::MirrorUVPlane(s + kLuma, kWidth, d + kLuma, kWidth, kWidth / 2, -kHeight / 2);
  });
}

Way opencv_nv21(cv::RotateFlags turn) {
  return with([=](const uint8_t* s, uint8_t* d) {
    opencv_turn(s, d, 1, CV_8UC1, turn);
    opencv_turn(s + kLuma, d + kLuma, 2, CV_8UC2, turn);
  });
}

constexpr const char* kSame = "both give the very same bytes";

}  // namespace

Jobs rotate_jobs() {
  const auto quarter = cv::ROTATE_90_COUNTERCLOCKWISE, half = cv::ROTATE_180;
  const Way plane_floor = move_bytes(kLuma, kLuma), nv21_floor = move_bytes(kLuma * 3 / 2, kLuma * 3 / 2);
  const auto ours = [](const kernel_list::Kernel& kernel, int mode) {
    return with(kernel_list::bound(kernel, {.width = kWidth, .height = kHeight, .mode = mode}));
  };
  const auto& plane = kernel_list::named("rotate_y_opt");
  const auto& nv21 = kernel_list::named("rotate_NV21_opt");
  const auto libyuv_plane = [](libyuv::RotationMode mode) {
    return with([=](const uint8_t* s, uint8_t* d) { libyuv_luma(s, d, mode); });
  };
  const auto opencv_plane = [](cv::RotateFlags turn) {
    return with([=](const uint8_t* s, uint8_t* d) { opencv_turn(s, d, 1, CV_8UC1, turn); });
  };
  return {
      {"plane_rotate90_1920x1080",
       kSame,
       {.of_fastest_peer = 0.38},
       ours(plane, kQuarter),
       {{"libyuv", libyuv_plane(libyuv::kRotate270)}, {"opencv", opencv_plane(quarter)}},
       plane_floor},
      {"plane_rotate180_1920x1080",
       std::string(kSame) + "; ours writes a line to standard output at every call",
       {.of_fastest_peer = 1.00},
       ours(plane, kHalf),
       {{"libyuv", libyuv_plane(libyuv::kRotate180)}, {"opencv", opencv_plane(half)}},
       plane_floor},
      {"nv21_rotate90_1920x1080",
       std::string(kSame) + "; libyuv turns no interleaved chroma by a quarter: 16-bit pixels, or split and "
                            "merge",
       {.of_fastest_peer = 0.40},
       ours(nv21, kQuarter),
       {{"libyuv", libyuv_nv21_quarter()},
        {"libyuv:16", libyuv_nv21_quarter_16()},
        {"opencv", opencv_nv21(quarter)}},
       nv21_floor},
      {"nv21_rotate180_1920x1080",
       kSame,
       {.of_fastest_peer = 1.00},
       ours(nv21, kHalf),
       {{"libyuv", libyuv_nv21_half()}, {"opencv", opencv_nv21(half)}},
       nv21_floor}};
}

}  // namespace bench
