#include "probe_jobs.h"

#include <cstdint>
#include <memory>
#include <vector>

#include <morvale/morvale.h>
#include "bench/camera.h"
#include "bench/pictures.h"
#include "kernel_list/kernel_list.h"

namespace probe {
namespace {

using bench::Bytes;
using bench::Camera;
using bench::ScoreMap;
using kernel_list::Arguments;
using kernel_list::Group;
using kernel_list::Kernel;
using kernel_list::named;

/// Sizes with a tail behind every block width, so that the tails are counted too.
constexpr int W = 318, H = 202, kPixels = W * H;
constexpr int kMapWidth = 256, kMapHeight = 192, kMapPixels = kMapWidth * kMapHeight;
constexpr int kSide = 64, kCells = kSide * kSide;

/// Every other cell is blurred.
kernel_list::Blur usual_blur() {
  constexpr int kRadius = 4, kBits = 8;
  static Bytes grid(morvale::kBlurGridColumns * 8);
  static uint16_t weights[2 * kRadius + 1];
  for (size_t i = 0; i < grid.size(); i += 2) grid[i] = 1;
  GFilterCreation(1.5f, kRadius, kBits, weights);
  return {grid, weights, kRadius, kBits};
}

/// Planes that become larger are small.
Arguments usual_arguments(const Kernel& kernel) {
  const bool small = kernel.takes == kernel_list::Layout::kY && kernel.group != Group::kTurned;
  if (kernel.group == Group::kPadded) return {W, H, W, W, 0, W - H};
  if (kernel.group == Group::kScaled) return small ? Arguments{32, 24, 19, 15} : Arguments{W, H, 100, 76};
  if (kernel.group == Group::kBlurred) return {.width = W, .height = 64, .blur = usual_blur()};
  if (!small) return {W, H};
  const kernel_list::Region region{3, 5, 40, 30};
  return {.width = kSide,
          .height = 48,
          .out_width = kernel.ratio.wide * region.width,
          .factor = 5,
          .region = region};
}

Work on_picture(const Kernel& kernel, const Arguments& arguments) {
  const int width = arguments.width, height = arguments.height;
  const bool rgb = kernel.takes == kernel_list::Layout::kRgb || kernel.takes == kernel_list::Layout::kBgr;
  const auto from = std::make_shared<Bytes>(rgb ? bench::picture(width, height, 3, 1)
                                                : bench::nv21_picture(width, height, 1));
  const auto to = std::make_shared<Bytes>(12 * kPixels);  // room for any result
  return [=, call = bound(kernel, arguments)] { call(from->data(), to->data()); };
}

/// Where other arguments take another road.
struct OtherRoad {
  const char* name;
  const Kernel& kernel;
  Arguments arguments;
};
constexpr OtherRoad kOtherRoads[] = {
    {"NV21toRGB_pad_right", named("NV21toRGB_pad"), {W, H, W + 33, H, 33, 0}},
    {"resize_NV21_far", named("resize_NV21"), {W, H, 30, 19}},
    {"resize_NV21_whole_step", named("resize_NV21"), {300, 200, 100, 50}},
    {"resize_NV21_half_ratio", named("resize_NV21"), {300, 180, 200, 120}},
    {"resize_NV21_half_ratio_2", named("resize_NV21"), {300, 180, 120, 72}},
    {"resize_NV21_half_ratio_7", named("resize_NV21"), {300, 180, 40, 24}},
    {"rotate_y_mirror", named("rotate_y"), {.width = W, .height = H, .mode = 1}},
    {"rotate_y_opt_2", named("rotate_y_opt"), {.width = W, .height = H, .mode = 2}},
    {"rotate_y_opt_half", named("rotate_y_opt"), {.width = W, .height = H, .mode = 1}},
    {"rotate_NV21_2", named("rotate_NV21"), {.width = W, .height = H, .mode = 2}},
    {"rotate_NV21_half", named("rotate_NV21"), {.width = W, .height = H, .mode = 1}},
};

Work normalise_input() {
  const auto bytes = std::make_shared<Bytes>(bench::picture(W, H, 3, 1));
  const auto floats = std::make_shared<std::vector<float>>(3 * 128 * 128);
  return [=] { normalizeInput(bytes->data(), floats->data(), 128); };
}

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

std::vector<Job> all_jobs() {
  std::vector<Job> jobs = {
      {"normalizeInput", normalise_input},
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
  for (const Kernel& kernel : kernel_list::kKernels)
    jobs.push_back({kernel.name.data(), [&] { return on_picture(kernel, usual_arguments(kernel)); }});
  for (const OtherRoad& road : kOtherRoads)
    jobs.push_back({road.name, [&] { return on_picture(road.kernel, road.arguments); }});
  return jobs;
}

}  // namespace

std::span<const Job> jobs() {
  static const std::vector<Job> all = all_jobs();
  return all;
}

}  // namespace probe
