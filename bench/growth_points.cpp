/// How time grows with the work: colour and shrink with the frame, region finding with the regions.
#include <memory>

#include "bench/analysis_jobs.h"
#include "bench/frames.h"
#include "bench/job.h"
#include "bench/peers/libyuv_steps.h"
#include "bench/shrink_jobs.h"
#include "kernel_list/kernel_list.h"

namespace bench {
namespace {

struct Size {
  int width, height;
};
/// No ratio to 256 x 192 but the last is whole or a half, where the rule does less.
constexpr Size kSizes[] = {{320, 240},   {800, 600},   {1296, 972},  {1936, 1452},
                           {2592, 1944}, {4000, 3000}, {5184, 3888}, {8192, 6144}};

template <class Call>
Way on_frame(Size size, Call call) {
  return [=]() -> Work {
    const auto frame = std::make_shared<FrameSource>(size.width, size.height, kHot);
    const auto rgb = std::make_shared<Bytes>(static_cast<size_t>(3 * size.width * size.height));
    return [=] { call(frame->next(), rgb->data()); };
  };
}

GrowthPoint color(Size s) {
  const int pixels = s.width * s.height;
  return {"colour",
          pixels,
          pixels,
          pixels,
          on_frame(s, bound(kernel_list::named("NV21toRGB"), {s.width, s.height})),
          {"libyuv", on_frame(s, [=](const uint8_t* from, uint8_t* to) {
             yuv::nv21_to_rgb(from, to, s.width, s.height);
           })}};
}

GrowthPoint shrink(Size s) {
  const ShrinkSize size{s.width, s.height, 256, 192};
  const int pixels = s.width * s.height;
  return {"shrink",
          pixels,
          pixels,
          size.dst_width * size.dst_height,
          our_shrink(size, kHot),
          {"opencv", opencv_shrink(size, kHot, cv::INTER_LINEAR)}};
}

/// On a map large enough for 300 faces that do not touch.
GrowthPoint regions(int count) {
  constexpr int kWidth = 640, kHeight = 480, kColumns = 20, kRows = 15;
  const ScoreMap map = faces_on_grid(kWidth, kHeight, count, kColumns, kRows);
  return {"regions",
          count,
          kWidth * kHeight,
          kWidth * kHeight,
          our_faces(map, kWidth, kHeight),
          {"opencv", opencv_faces(map, kWidth, kHeight, true)}};
}

}  // namespace

std::vector<GrowthPoint> growth_points() {
  std::vector<GrowthPoint> points;
  for (const Size size : kSizes) points.push_back(color(size));
  for (const Size size : kSizes) points.push_back(shrink(size));
  for (const int count : {0, 10, 25, 50, 100, 150, 200, 250, 300}) points.push_back(regions(count));
  return points;
}

}  // namespace bench
