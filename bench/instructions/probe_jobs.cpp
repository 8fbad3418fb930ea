#include "probe_jobs.h"

#include <cstdint>
#include <memory>
#include <vector>

#include <morvale/morvale.h>
#include "bench/camera.h"
#include "bench/pictures.h"

namespace probe {
namespace {

using bench::Bytes;
using bench::Camera;
using bench::ScoreMap;

/// Sizes with a tail behind every block width, so that the tails are counted too.
constexpr int kWidth = 318, kHeight = 202, kPixels = kWidth * kHeight;
constexpr int kMapWidth = 256, kMapHeight = 192, kMapPixels = kMapWidth * kMapHeight;
constexpr int kSide = 64, kCells = kSide * kSide;

using Image = const uint8_t*;

/// A call on an NV21 picture and room for the largest result that comes from one.
template <class Call>
std::function<Work()> on_nv21(Call call) {
  return [=]() -> Work {
    const auto from = std::make_shared<Bytes>(bench::nv21_picture(kWidth, kHeight, 1));
    const auto to = std::make_shared<Bytes>(8 * kPixels);
    return [=] { call(from->data(), to->data()); };
  };
}

/// The same from three bytes a pixel.
template <class Call>
std::function<Work()> on_rgb(Call call) {
  return [=]() -> Work {
    const auto from = std::make_shared<Bytes>(bench::picture(kWidth, kHeight, 3, 1));
    const auto to = std::make_shared<std::vector<float>>(3 * kPixels);
    return [=] { call(from->data(), to->data()); };
  };
}

/// From a small plane, 36 times enlarged at most.
template <class Call>
std::function<Work()> on_plane(Call call) {
  return [=]() -> Work {
    const auto from = std::make_shared<Bytes>(bench::picture(kSide, 48, 1, 1));
    const auto to = std::make_shared<Bytes>(64 * kSide * 48);
    return [=] { call(from->data(), to->data()); };
  };
}

uint8_t* bytes(float* p) { return reinterpret_cast<uint8_t*>(p); }

Work smoothing(uint8_t* (*smooth)(uint8_t*, uint8_t*, void*, int)) {
  NETSIZE = kSide;
  const auto now = std::make_shared<Bytes>(bench::picture(kSide, kSide, 5, 1));
  const auto before = std::make_shared<Bytes>(bench::picture(kSide, kSide, 5, 2));
  return [=] { smooth(now->data(), before->data(), nullptr, 2); };
}

Work scores_to_bytes() {
  NETSIZE = kSide;
  const auto scores = std::make_shared<std::vector<float>>(bench::portrait().network_scores(kSide));
  const auto target = std::make_shared<Bytes>(5 * kCells);
  return [=] { getOutputArr(scores->data(), target->data(), 5); };
}

Work normalise_output() {
  const auto scores = std::make_shared<std::vector<float>>(bench::portrait().network_scores(kSide));
  const auto target = std::make_shared<Bytes>(5 * kCells);
  return [=] { normalizeOutput(scores->data(), target->data(), kSide); };
}

Work blur(decltype(GaussianBlur_Grid_Hori)* pass) {
  const auto from = std::make_shared<Bytes>(bench::picture(kWidth, 64, 1, 1));
  const auto to = std::make_shared<Bytes>(from->size());
  const auto grid = std::make_shared<Bytes>(morvale::kBlurGridColumns * 8);
  for (size_t i = 0; i < grid->size(); i += 2) (*grid)[i] = 1;
  const auto weights = std::make_shared<std::vector<uint16_t>>(9);
  GFilterCreation(1.5f, 4, 8, weights->data());
  return [=] { pass(from->data(), to->data(), grid->data(), kWidth, 64, weights->data(), 4, 8); };
}

std::shared_ptr<Camera> front_camera() {
  const auto camera = std::make_shared<Camera>(morvale::kFrontCamera, bench::portrait(), 1000, 750);
  camera->core().segFactor = 48;
  camera->core().scaleRatio = 1000 / 256.0f;
  return camera;
}

struct Planes {
  explicit Planes(const ScoreMap& map) : scores(map.planes()) {}

  std::vector<Bytes> scores;
  Bytes luma = bench::picture(kMapWidth, kMapHeight, 1, 1), rgb = bench::picture(kMapWidth, kMapHeight, 3, 2);
  Bytes extra = Bytes(kMapPixels, 20), mask = Bytes(kMapPixels, 255);

  uint8_t* operator[](size_t k) { return scores[k].data(); }
};

Work faces(int count) {
  const auto camera = front_camera();
  const auto p = std::make_shared<Planes>(bench::faces_on_grid(kMapWidth, kMapHeight, count, 10, 5));
  return [=] {
    auto& c = *p;
    camera->core().DL_FD_Calc(c[0], c[1], c[2], c[3], c[4], c.luma.data(), c.rgb.data(), kMapWidth,
                              kMapHeight, 0);
  };
}

Work face_figures() {
  const auto camera = front_camera();
  const auto p = std::make_shared<Planes>(bench::faces_on_grid(kMapWidth, kMapHeight, 1, 1, 1));
  return [=] {
    auto& c = *p;
    camera->core().WriteFaceInfo(c[2], c.luma.data(), c.rgb.data(), c.mask.data(), kMapWidth, 0, 60, 180, 20,
                                 170, 0);
  };
}

Work persons() {
  const auto camera = front_camera();
  const auto frame = std::make_shared<Bytes>(bench::nv21_picture(1000, 750, 1));
  camera->run_frame(frame->data());  // the record's planes are drawn upon
  const auto p = std::make_shared<Planes>(bench::faces_on_grid(kMapWidth, kMapHeight, 3, 3, 1));
  const auto mask = std::make_shared<Bytes>(kMapPixels);
  return [=, keep = frame] {
    auto& c = *p;
    camera->core().DL_Human_Calc(c[0], c[1], c[2], c[3], c[4], c.extra.data(), nullptr, nullptr, mask->data(),
                                 kMapWidth, kMapHeight, 1);
  };
}

Work front_scene() {
  const auto camera = front_camera();
  const auto p = std::make_shared<Planes>(ScoreMap(1, 1));
  const auto map = std::make_shared<Bytes>(bench::portrait().bytes());
  return [=] { camera->core().argMax_human_onlySkin(p->rgb.data(), p->luma.data(), map->data()); };
}

Work back_scene() {
  const auto camera = std::make_shared<Camera>(bench::kBackCamera, bench::person(), 480, 270);
  const auto map = std::make_shared<Bytes>(bench::person().bytes());
  camera->core().segFactor = 18;
  return [=] { camera->core().argMax_back_only_human(map->data()); };
}

Work split_labels() {
  const auto camera = front_camera();
  const auto map = std::make_shared<Bytes>(bench::portrait().bytes());
  const auto to = std::make_shared<std::vector<Bytes>>(6, Bytes(kCells));
  return [=] {
    auto& p = *to;
    camera->core().argMax_6label(p[0].data(), p[1].data(), p[2].data(), p[3].data(), p[4].data(), p[5].data(),
                                 map->data());
  };
}

/// A frame after the smoothing has settled.
Work frame(int camera_type, const ScoreMap& map, int width, int height) {
  const auto camera = std::make_shared<Camera>(camera_type, map, width, height);
  const auto picture = std::make_shared<Bytes>(bench::nv21_picture(width, height, 1));
  for (int i = 0; i < 3; ++i) camera->run_frame(picture->data());
  return [=] { camera->run_frame(picture->data()); };
}

constexpr int W = kWidth, H = kHeight;

const std::vector<Job>& all_jobs() {
  static const std::vector<Job> jobs = {
      {"NV21toRGB", on_nv21([](Image s, uint8_t* d) { NV21toRGB(s, s + kPixels, d, W, H); })},
      {"NV21toBGR", on_nv21([](Image s, uint8_t* d) { NV21toBGR(s, d, W, H); })},
      {"NV21toBGR_planar", on_nv21([](Image s, uint8_t* d) {
         uint8_t* const planes[3] = {d, d + 2 * kPixels, d + 4 * kPixels};
         NV21toBGR_planar(s, planes, W, H);
       })},
      {"NV21toRGB_pad", on_nv21([](Image s, uint8_t* d) { NV21toRGB_pad(s, d, W, H, W, W, 0, W - H); })},
      {"NV21toRGB_pad_right",
       on_nv21([](Image s, uint8_t* d) { NV21toRGB_pad(s, d, W, H, W + 33, H, 33, 0); })},
      {"NV21toBGR_pad", on_nv21([](Image s, uint8_t* d) { NV21toBGR_pad(s, d, W, H, W, W, 0, W - H); })},
      {"NV12toRGB_pad", on_nv21([](Image s, uint8_t* d) { NV12toRGB_pad(s, d, W, H, W, W, 0, W - H); })},
      {"NV21toBGR_pad_lsi",
       on_nv21([](Image s, uint8_t* d) { NV21toBGR_pad_lsi(s, d, W, H, W, W, 0, W - H); })},
      {"RGBtoNV21", on_rgb([](uint8_t* s, float* d) { RGBtoNV21(s, bytes(d), bytes(d) + kPixels, W, H); })},
      {"BGRtoNV21", on_rgb([](uint8_t* s, float* d) { BGRtoNV21(s, bytes(d), W, H); })},
      {"BGR2GRAY", on_rgb([](uint8_t* s, float* d) { BGR2GRAY(s, bytes(d), W, H); })},
      {"BGR2HSV", on_rgb([](uint8_t* s, float* d) { BGR2HSV(s, d, W, H); })},
      {"resize_NV21", on_nv21([](Image s, uint8_t* d) { resize_NV21(s, d, W, H, 100, 76); })},
      {"resize_NV21_far", on_nv21([](Image s, uint8_t* d) { resize_NV21(s, d, W, H, 30, 19); })},
      {"resize_NV21_whole_step", on_nv21([](Image s, uint8_t* d) { resize_NV21(s, d, 300, 200, 100, 50); })},
      {"resize_NV21_half_ratio", on_nv21([](Image s, uint8_t* d) { resize_NV21(s, d, 300, 180, 200, 120); })},
      {"resize_NV21_half_ratio_2",
       on_nv21([](Image s, uint8_t* d) { resize_NV21(s, d, 300, 180, 120, 72); })},
      {"resize_NV21_half_ratio_7", on_nv21([](Image s, uint8_t* d) { resize_NV21(s, d, 300, 180, 40, 24); })},
      {"resize_NV21_2x_up", on_nv21([](Image s, uint8_t* d) { resize_NV21_2x_up(s, d, W, H); })},
      {"resize_NV21_2x_down", on_nv21([](Image s, uint8_t* d) { resize_NV21_2x_down(s, d, W, H); })},
      {"resize_NV21_3x_down", on_nv21([](Image s, uint8_t* d) { resize_NV21_3x_down(s, d, W, H); })},
      {"resize_Y_1", on_plane([](Image s, uint8_t* d) { resize_Y_1(s, d, 32, 24, 19, 15); })},
      {"resize_y_2x_up", on_plane([](Image s, uint8_t* d) { resize_y_2x_up(s, d, kSide, 48); })},
      {"resize_y_4x_up", on_plane([](Image s, uint8_t* d) { resize_y_4x_up(s, d, kSide, 48); })},
      {"resize_y_6x_up", on_plane([](Image s, uint8_t* d) { resize_y_6x_up(s, d, kSide, 48); })},
      {"resize_y", on_plane([](Image s, uint8_t* d) { resize_y(s, d, kSide, 48, 5); })},
      {"resize_y_8x_up_RR_hori",
       on_plane([](Image s, uint8_t* d) { resize_y_8x_up_RR_hori(s, d, kSide, 3, 5, 40, 30, 320); })},
      {"resize_y_8x_up_RR_vert",
       on_plane([](Image s, uint8_t* d) { resize_y_8x_up_RR_vert(s, d, kSide, 3, 5, 40, 30, 40); })},
      {"rotate_y_0", on_nv21([](Image s, uint8_t* d) { rotate_y(s, d, W, H, 0); })},
      {"rotate_y_mirror", on_nv21([](Image s, uint8_t* d) { rotate_y(s, d, W, H, 1); })},
      {"rotate_y_opt_2", on_nv21([](Image s, uint8_t* d) { rotate_y_opt(s, d, W, H, 2); })},
      {"rotate_y_opt_half", on_nv21([](Image s, uint8_t* d) { rotate_y_opt(s, d, W, H, 1); })},
      {"rotate_NV21_0", on_nv21([](Image s, uint8_t* d) { rotate_NV21(s, d, W, H, 0); })},
      {"rotate_NV21_2", on_nv21([](Image s, uint8_t* d) { rotate_NV21(s, d, W, H, 2); })},
      {"rotate_NV21_half", on_nv21([](Image s, uint8_t* d) { rotate_NV21(s, d, W, H, 1); })},
      {"GaussianBlur_Grid_Hori", [] { return blur(GaussianBlur_Grid_Hori); }},
      {"GaussianBlur_Grid_Vert", [] { return blur(GaussianBlur_Grid_Vert); }},
      {"normalizeInput", on_rgb([](uint8_t* s, float* d) { normalizeInput(s, d, 128); })},
      {"normalizeOutput", normalise_output},
      {"getOutputArr", scores_to_bytes},
      {"segmetationIIR_Front", [] { return smoothing(segmetationIIR_Front); }},
      {"segmetationIIR_Back", [] { return smoothing(segmetationIIR_Back); }},
      {"argMax_6label", split_labels},
      {"DL_FD_Calc_1_face", [] { return faces(1); }},
      {"DL_FD_Calc_50_faces", [] { return faces(50); }},
      {"WriteFaceInfo", face_figures},
      {"DL_Human_Calc", persons},
      {"front_scene", front_scene},
      {"back_scene", back_scene},
      {"front_frame", [] { return frame(morvale::kFrontCamera, bench::portrait(), 1000, 750); }},
      {"front_frame_1920x1080",
       [] { return frame(morvale::kFrontCamera, bench::wide_portrait(), 1920, 1080); }},
      {"front_frame_640x480", [] { return frame(morvale::kFrontCamera, bench::portrait(), 640, 480); }},
      {"front_frame_1440x1080", [] { return frame(morvale::kFrontCamera, bench::portrait(), 1440, 1080); }},
      {"back_frame", [] { return frame(bench::kBackCamera, bench::person(), 480, 270); }},
      {"back_frame_1920x1080", [] { return frame(bench::kBackCamera, bench::person(), 1920, 1080); }},
  };
  return jobs;
}

}  // namespace

std::span<const Job> jobs() { return all_jobs(); }

}  // namespace probe
