#include <memory>

#include "bench/floor.h"
#include "bench/job.h"
#include "bench/peers/libyuv_steps.h"
#include "bench/peers/opencv_steps.h"
#include "bench/pictures.h"
#include "kernel_list/kernel_list.h"

namespace bench {
namespace {

constexpr size_t kPlanes = 5;

/// Five score planes, each enlarged by one call.
template <class Call>
Way five_planes(int w, int h, Call call) {
  return [=]() -> Work {
    const auto source = std::make_shared<std::vector<Bytes>>();
    for (uint32_t k = 0; k < kPlanes; ++k) source->push_back(picture(w, h, 1, k));
    const auto target = std::make_shared<std::vector<Bytes>>(kPlanes, Bytes(static_cast<size_t>(16 * w * h)));
    return [=] {
      for (size_t k = 0; k < kPlanes; ++k) call((*source)[k].data(), (*target)[k].data());
    };
  };
}

Job quadruple(int w, int h) {
  const auto half = std::make_shared<Bytes>();
  const auto bytes = static_cast<size_t>(w * h) * kPlanes;
  return {"plane_4x_up_" + std::to_string(w) + "x" + std::to_string(h) + "_five",
          "peers sample at pixel centres and round; the rule has quarter weights from the left and top pixel",
          {.of_fastest_peer = 0.08},
          five_planes(w, h, bound(kernel_list::named("resize_y_4x_up"), {w, h})),
          {{"libyuv", five_planes(w, h, [=](const uint8_t* s, uint8_t* d) { yuv::enlarge(s, w, h, d, 4); })},
           {"libyuv:2x2x",
            five_planes(w, h, [=](const uint8_t* s, uint8_t* d) { yuv::quadruple(s, w, h, *half, d); })},
           {"opencv",
            five_planes(w, h,
                        [=](const uint8_t* s, uint8_t* d) { ocv::resize_plane(s, w, h, d, 4 * w, 4 * h); })}},
          move_bytes(bytes, 16 * bytes)};
}

/// The back camera's mask as grid.
Job grid() {
  const int w = 32, h = 24, dw = 19, dh = 15;
  const auto with = [=](auto call) -> Way {
    return [=]() -> Work {
      const auto source = std::make_shared<Bytes>(picture(w, h, 1, 1));
      const auto target = std::make_shared<Bytes>(static_cast<size_t>(dw * dh));
      return [=] { call(source->data(), target->data()); };
    };
  };
  return {"plane_bilinear_32x24_19x15",
          "both sample at pixel centres and round, the rule at the top-left corner, truncating",
          {.of_fastest_peer = 0.65},
          with(bound(kernel_list::named("resize_Y_1"), {w, h, dw, dh})),
          {{"libyuv", with([=](const uint8_t* s, uint8_t* d) {
              libyuv::ScalePlane(s, w, w, h, d, dw, dw, dh, libyuv::kFilterBilinear);
            })},
           {"opencv", with([=](const uint8_t* s, uint8_t* d) { ocv::resize_plane(s, w, h, d, dw, dh); })}},
          move_bytes(static_cast<size_t>(w * h), static_cast<size_t>(dw * dh))};
}

}  // namespace

Jobs plane_jobs() { return {quadruple(64, 48), quadruple(64, 64), grid()}; }

}  // namespace bench
