#include <memory>

#include "bench/floor.h"
#include "bench/job.h"
#include "bench/peers/libyuv_steps.h"
#include "bench/peers/opencv_steps.h"
#include "bench/pictures.h"
#include "kernel_list/kernel_list.h"

namespace bench {
namespace {

using kernel_list::named;

/// The network input's picture: 256 x 192, mirrored down to a square.
constexpr int kNetWidth = 256, kNetHeight = 192, kNetMargin = 64;
constexpr int kHdWidth = 1920, kHdHeight = 1080;

size_t pixels(int width, int height) { return static_cast<size_t>(width) * static_cast<size_t>(height); }

/// A call on a source and a destination of `written` bytes (and the blocks' overrun).
template <class Call>
Way on(Bytes (*make)(int, int), int width, int height, size_t written, Call call) {
  return [=]() -> Work {
    const auto source = std::make_shared<Bytes>(make(width, height));
    const auto target = std::make_shared<Bytes>(written + 64);
    return [=] { call(source->data(), target->data()); };
  };
}

Bytes nv21(int width, int height) { return nv21_picture(width, height, 1); }
Bytes rgb(int width, int height) { return picture(width, height, 3, 2); }

constexpr const char* kRgbDiffers =
    "libyuv: 6-bit fixed point, full-range BT.601; OpenCV: 20-bit, studio range; the rule: 14-bit and other "
    "constants";

Job padded() {
  const int w = kNetWidth, h = kNetHeight, margin = kNetMargin;
  const size_t written = 3 * pixels(w, h + margin);
  const auto with = [=](auto call) { return on(nv21, w, h, written, call); };
  return {
      "nv21_rgb_pad_256x192",
      kRgbDiffers,
      {.of_fastest_peer = 0.45},
      with(bound(named("NV21toRGB_pad"), {w, h, w, w, 0, margin})),
      {{"libyuv", with([=](const uint8_t* s, uint8_t* d) { yuv::nv21_to_rgb_padded(s, d, w, h, margin); })},
       {"opencv", with([=](const uint8_t* s, uint8_t* d) { ocv::nv21_to_rgb_padded(s, d, w, h, margin); })}},
      move_bytes(pixels(w, h) * 3 / 2, written)};
}

Job whole(int w, int h, double target) {
  const size_t written = 3 * pixels(w, h);
  const auto with = [=](auto call) { return on(nv21, w, h, written, call); };
  return {"nv21_rgb_" + std::to_string(w) + "x" + std::to_string(h),
          kRgbDiffers,
          {.of_fastest_peer = target},
          with(bound(named("NV21toRGB"), {w, h})),
          {{"libyuv", with([=](const uint8_t* s, uint8_t* d) { yuv::nv21_to_rgb(s, d, w, h); })},
           {"opencv", with([=](const uint8_t* s, uint8_t* d) { ocv::nv21_to_rgb_padded(s, d, w, h, 0); })}},
          move_bytes(pixels(w, h) * 3 / 2, written)};
}

Work opencv_rgb_nv21(int w, int h) {
  struct Memory {
    Bytes source, target;
    cv::Mat planar;
  };
  const auto m = std::make_shared<Memory>(Memory{rgb(w, h), Bytes(pixels(w, h) * 3 / 2), {}});
  return [=] {
    cv::cvtColor(ocv::over(m->source.data(), h, w, CV_8UC3), m->planar, cv::COLOR_RGB2YUV_I420);
    const uint8_t* u = m->planar.data + w * h;
    cv::Mat luma = ocv::over(m->target.data(), h, w, CV_8UC1);
    cv::Mat pairs = ocv::over(m->target.data() + w * h, h / 2, w / 2, CV_8UC2);
    m->planar.rowRange(0, h).copyTo(luma);
    const cv::Mat vu[] = {ocv::over(u + w * h / 4, h / 2, w / 2, CV_8UC1),
                          ocv::over(u, h / 2, w / 2, CV_8UC1)};
    cv::merge(vu, 2, pairs);
  };
}

Job rgb_to_nv21() {
  const int w = kHdWidth, h = kHdHeight;
  const size_t written = pixels(w, h) * 3 / 2;
  const auto with = [=](auto call) { return on(rgb, w, h, written, call); };
  return {
      "rgb_nv21_1920x1080",
      "libyuv: 8-bit integer luma, chroma averaged over 2 x 2; OpenCV: studio range, planar and then merged; "
      "the rule: 24-bit float luma, chroma of one pixel in double precision",
      {.of_fastest_peer = 1.2},
      with(bound(named("RGBtoNV21"), {w, h})),
      {{"libyuv",
        with([=](const uint8_t* s, uint8_t* d) { libyuv::RAWToJNV21(s, 3 * w, d, w, d + w * h, w, w, h); })},
       {"opencv", [=] { return opencv_rgb_nv21(w, h); }}},
      move_bytes(3 * pixels(w, h), written)};
}

Job bgr_to_grey() {
  const int w = kHdWidth, h = kHdHeight;
  const auto with = [=](auto call) { return on(rgb, w, h, pixels(w, h), call); };
  return {"bgr_grey_1920x1080",
          "both: BT.601 weights, libyuv in 8 and OpenCV in 15 bits; the rule: BT.709 in 16 bits",
          {.of_fastest_peer = 0.75},
          with(bound(named("BGR2GRAY"), {w, h})),
          {{"libyuv", with([=](const uint8_t* s, uint8_t* d) { libyuv::RGB24ToJ400(s, 3 * w, d, w, w, h); })},
           {"opencv", with([=](const uint8_t* s, uint8_t* d) {
              cv::Mat grey = ocv::over(d, h, w, CV_8UC1);
              cv::cvtColor(ocv::over(s, h, w, CV_8UC3), grey, cv::COLOR_BGR2GRAY);
            })}},
          move_bytes(3 * pixels(w, h), pixels(w, h))};
}

Work opencv_hsv(int w, int h) {
  const auto source = std::make_shared<Bytes>(rgb(w, h));
  const auto floats = std::make_shared<cv::Mat>();
  const auto target = std::make_shared<cv::Mat>();
  return [=] {
    ocv::over(source->data(), h, w, CV_8UC3).convertTo(*floats, CV_32F, 1.0 / 255);
    cv::cvtColor(*floats, *target, cv::COLOR_BGR2HSV);
  };
}

Job bgr_to_hsv() {
  const int w = kHdWidth, h = kHdHeight;
  return {"bgr_hsv_float_1920x1080",
          "OpenCV: two passes (to float, then HSV), S in 0..1; libyuv has none",
          {.of_fastest_peer = 0.45},
          on(rgb, w, h, 12 * pixels(w, h), bound(named("BGR2HSV"), {w, h})),
          {{"opencv", [=] { return opencv_hsv(w, h); }}},
          move_bytes(3 * pixels(w, h), 12 * pixels(w, h))};
}

}  // namespace

Jobs color_jobs() {
  return {padded(),      whole(1920, 1080, 0.45), whole(4000, 3000, 0.65),
          rgb_to_nv21(), bgr_to_grey(),           bgr_to_hsv()};
}

}  // namespace bench
