#include "bench/shrink_jobs.h"

#include <cstring>
#include <memory>

#include "bench/floor.h"
#include "bench/frames.h"
#include "bench/peers/libyuv_steps.h"
#include "bench/peers/opencv_steps.h"
#include "kernel_list/kernel_list.h"

namespace bench {
namespace {

template <class Call>
Way on_frames(ShrinkSize s, size_t frames, Call call) {
  return [=]() -> Work {
    const auto source = std::make_shared<FrameSource>(s.width, s.height, frames);
    const auto target = std::make_shared<Bytes>(static_cast<size_t>(s.dst_width * s.dst_height * 3 / 2));
    return [=] { call(source->next(), target->data()); };
  };
}

Job job(std::string name, std::string differs, Target target, ShrinkSize size, size_t frames,
        std::vector<Peer> peers) {
  return {std::move(name),          std::move(differs), target,
          our_shrink(size, frames), std::move(peers),   shrink_floor(size, frames)};
}

/// Bilinear in both libraries competes; what does not interpolate, or averages everything, is only shown.
std::vector<Peer> all_filters(ShrinkSize size, bool sampling_is_the_rule) {
  return {{"libyuv", libyuv_shrink(size, kHot, libyuv::kFilterBilinear)},
          {"libyuv:none", libyuv_shrink(size, kHot, libyuv::kFilterNone), false},
          {"libyuv:box", libyuv_shrink(size, kHot, libyuv::kFilterBox), false},
          {"opencv", opencv_shrink(size, kHot, cv::INTER_LINEAR)},
          {"opencv:nearest", opencv_shrink(size, kHot, cv::INTER_NEAREST), sampling_is_the_rule},
          {"opencv:area", opencv_shrink(size, kHot, cv::INTER_AREA), false}};
}

}  // namespace

Way our_shrink(ShrinkSize s, size_t frames) {
  const kernel_list::Arguments arguments{s.width, s.height, s.dst_width, s.dst_height};
  return on_frames(s, frames, bound(kernel_list::named("resize_NV21_opt"), arguments));
}

Way libyuv_shrink(ShrinkSize s, size_t frames, libyuv::FilterMode filter) {
  return on_frames(s, frames, [=](const uint8_t* from, uint8_t* to) {
    yuv::shrink(from, s.width, s.height, to, s.dst_width, s.dst_height, filter);
  });
}

Way opencv_shrink(ShrinkSize s, size_t frames, cv::InterpolationFlags filter) {
  return on_frames(s, frames, [=](const uint8_t* from, uint8_t* to) {
    ocv::shrink(from, s.width, s.height, to, s.dst_width, s.dst_height, filter);
  });
}

Way shrink_floor(ShrinkSize s, size_t frames) {
  const std::vector<int> luma = sampled_rows(s.height, s.dst_height);
  // The chroma plane's step is the luma plane's.
  std::vector<int> chroma;
  for (const int row : luma) {
    if (row < s.height / 2) chroma.push_back(row);
  }
  return on_frames(s, frames, [=](const uint8_t* from, uint8_t* to) {
    touch({from, s.width, luma});
    touch({from + s.width * s.height, s.width, chroma});
    std::memset(to, 1, static_cast<size_t>(s.dst_width * s.dst_height * 3 / 2));
  });
}

Jobs shrink_jobs() {
  const ShrinkSize front{4000, 3000, 256, 192}, back{1920, 1080, 128, 72};
  const ShrinkSize small_half{192, 108, 128, 72}, large_half{1920, 1080, 1280, 720};
  const ShrinkSize seven_and_half{1920, 1080, 256, 144}, two_and_half{640, 480, 256, 192};
  const ShrinkSize near{1440, 1080, 256, 192};
  const std::string bilinear =
      "peers sample at pixel centres, the rule at the top-left corner of each step; libyuv blends whole "
      "source "
      "rows first, with 7- and 8-bit weights, OpenCV has 11-bit weights";
  const std::string half =
      "peers interpolate at pixel centres, the rule averages 1, 2 or 4 neighbours: less arithmetic";
  return {job("nv21_shrink_4000x3000_256x192", bilinear, {.of_fastest_peer = 0.60}, front, kHot,
              all_filters(front, false)),
          job("nv21_shrink_4000x3000_cold", bilinear + "; a new frame each time", {.of_fastest_peer = 0.42},
              front, kCold,
              {{"libyuv", libyuv_shrink(front, kCold, libyuv::kFilterBilinear)},
               {"libyuv:none", libyuv_shrink(front, kCold, libyuv::kFilterNone), false},
               {"opencv", opencv_shrink(front, kCold, cv::INTER_LINEAR)}}),
          job("nv21_shrink_1920x1080_128x72",
              "the step is exactly 15, so the rule only samples: OpenCV's nearest gives the very same bytes",
              {.of_fastest_peer = 0.65}, back, kHot, all_filters(back, true)),
          job("nv21_shrink_1440x1080_256x192", bilinear, {}, near, kHot, all_filters(near, false)),
          job("nv21_half_ratio_1920x1080_256x144", half, {.of_fastest_peer = 0.35}, seven_and_half, kHot,
              all_filters(seven_and_half, false)),
          job("nv21_half_ratio_640x480_256x192", half, {.of_fastest_peer = 0.30}, two_and_half, kHot,
              all_filters(two_and_half, false)),
          job("nv21_half_ratio_192x108_128x72", half, {.of_fastest_peer = 0.13}, small_half, kHot,
              all_filters(small_half, false)),
          job("nv21_half_ratio_1920x1080_1280x720", half, {.of_fastest_peer = 0.13}, large_half, kHot,
              all_filters(large_half, false))};
}

}  // namespace bench
