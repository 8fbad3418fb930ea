/// What stands around the network: its input, its scores, the smoothing, the split.
#include <memory>

#include <morvale/morvale.h>
#include "bench/floor.h"
#include "bench/job.h"
#include "bench/our_steps.h"
#include "bench/peers/libyuv_steps.h"
#include "bench/peers/opencv_steps.h"
#include "bench/pictures.h"

namespace bench {
namespace {

constexpr int kInput = 256 * 256 * 3;
constexpr int kSide = 64, kCells = kSide * kSide, kScores = 5 * kCells;

Job normalise() {
  const auto with = [](auto call) -> Way {
    return [=]() -> Work {
      const auto source = std::make_shared<Bytes>(picture(256, 256, 3, 1));
      const auto target = std::make_shared<std::vector<float>>(kInput);
      return [=] { call(source->data(), target->data()); };
    };
  };
  return {
      "normalise_196608",
      "OpenCV: one float multiply-add; libyuv: scale only, plain C; the rule: a sum in double precision",
      {.of_fastest_peer = 1.05},
      with([](const uint8_t* s, float* d) { our::normalise(s, d, kInput); }),
      {{"libyuv", with([](const uint8_t* s, float* d) { libyuv::ByteToFloat(s, d, 2.0f / 255, kInput); })},
       {"opencv", with([](const uint8_t* s, float* d) { ocv::normalise(s, d, kInput); })}},
      move_bytes(kInput, 4 * kInput)};
}

Job scores_to_bytes() {
  const auto with = [](auto call) -> Way {
    return [=]() -> Work {
      NETSIZE = kSide;
      const auto source = std::make_shared<std::vector<float>>(portrait().network_scores(kSide));
      const auto target = std::make_shared<Bytes>(kScores);
      return [=] { call(source->data(), target->data()); };
    };
  };
  return {"scores_to_bytes_20480",
          "OpenCV: one multiply-add and rounding; the rule: two multiplications, a clamp, truncation",
          {.of_fastest_peer = 1.05},
          with([](float* s, uint8_t* d) { getOutputArr(s, d, 5); }),
          {{"opencv", with([](const float* s, uint8_t* d) { ocv::scores_to_bytes(s, d, kScores); })}},
          move_bytes(4 * kScores, kScores)};
}

Job smooth() {
  const auto with = [](auto make_call) -> Way {
    return [=]() -> Work {
      NETSIZE = kSide;
      const auto now = std::make_shared<Bytes>(picture(kSide, kSide, 5, 1));
      const auto before = std::make_shared<Bytes>(picture(kSide, kSide, 5, 2));
      return [=, call = make_call()]() mutable { call(now->data(), before->data()); };
    };
  };
  return {"smooth_64x64x5",
          "OpenCV: five calls with float weights; no library has this",
          {.of_fastest_peer = 0.07, .of_portable = 0.12},
          with([] {
            return [](uint8_t* now, uint8_t* before) { segmetationIIR_Front(now, before, nullptr, 2); };
          }),
          {{"opencv", with([] {
              return [smoothing = ocv::Smoothing()](uint8_t* now, uint8_t* before) mutable {
                smoothing(now, before, kCells);
              };
            })}},
          move_bytes(2 * kScores, kScores)};
}

Job split() {
  constexpr int kMapCells = 64 * 48;
  const auto with = [](auto call) -> Way {
    return [=]() -> Work {
      const auto map = std::make_shared<ScoreMap>(portrait());
      const auto planes = std::make_shared<std::vector<Bytes>>(5, Bytes(kMapCells));
      return [=] {
        uint8_t* to[5];
        for (size_t k = 0; k < 5; ++k) to[k] = (*planes)[k].data();
        call(map->bytes().data(), to);
      };
    };
  };
  return {
      "split_five_planes_64x48",
      "OpenCV: cv::split of five channels, the same bytes",
      {.of_fastest_peer = 0.30},
      with([](const uint8_t* map, uint8_t* const(&to)[5]) { our::split(map, kMapCells, to); }),
      {{"opencv", with([](const uint8_t* map, uint8_t* const(&to)[5]) { ocv::split(map, kMapCells, to); })}},
      move_bytes(5 * kMapCells, 5 * kMapCells)};
}

}  // namespace

Jobs network_jobs() { return {normalise(), scores_to_bytes(), smooth(), split()}; }

}  // namespace bench
