/// Whole frames, from the record to the result. The network answers at once.
#include <memory>

#include "bench/camera.h"
#include "bench/floor.h"
#include "bench/frames.h"
#include "bench/job.h"
#include "bench/peers/chain.h"
#include "bench/shrink_jobs.h"

namespace bench {
namespace {

struct FrameKind {
  ChainFrame::Side side;
  ShrinkSize shrink;
  size_t frames;

  bool front() const { return side == ChainFrame::Side::kFront; }
  ScoreMap map() const {
    if (!front()) return person();
    return shrink.dst_height == 144 ? wide_portrait() : portrait();
  }
};

/// From here on the smoothing blends, and every slot of the ring is full.
constexpr int kSettled = 4;

Way ours(FrameKind kind) {
  return [=]() -> Work {
    const int w = kind.shrink.width, h = kind.shrink.height;
    const auto camera =
        std::make_shared<Camera>(kind.front() ? morvale::kFrontCamera : kBackCamera, kind.map(), w, h);
    const auto frames = std::make_shared<FrameSource>(w, h, kind.frames);
    for (int i = 0; i < kSettled; ++i) camera->run_frame(frames->next());
    return [=] { camera->run_frame(frames->next()); };
  };
}

Way chain(FrameKind kind) {
  return [=]() -> Work {
    const int w = kind.shrink.width, h = kind.shrink.height;
    const auto road =
        std::make_shared<ChainFrame>(kind.side, w, h, kind.map().network_scores(kind.shrink.dst_width / 4));
    const auto frames = std::make_shared<FrameSource>(w, h, kind.frames);
    for (int i = 0; i < kSettled; ++i) (*road)(frames->next());
    return [=] { (*road)(frames->next()); };
  };
}

/// Shrink, colour, normalising and scores; the scene's map stays in the cache.
Way frame_floor(FrameKind kind) {
  const auto side = static_cast<size_t>(kind.shrink.dst_width);
  const auto height = static_cast<size_t>(kind.shrink.dst_height);
  const size_t input = 3 * side * side, scores = 5 * side * side / 16;
  return all_of({shrink_floor(kind.shrink, kind.frames), move_bytes(side * height * 3 / 2, input),
                 move_bytes(input, 4 * input), move_bytes(4 * scores, scores)});
}

Job job(std::string name, double target, FrameKind kind) {
  return {std::move(name),
          "the fastest library call for each step; the network is left out on both sides",
          {.of_fastest_peer = target},
          ours(kind),
          {{"chain", chain(kind)}},
          frame_floor(kind)};
}

}  // namespace

Jobs frame_jobs() {
  const ShrinkSize front{4000, 3000, 256, 192}, back{1920, 1080, 128, 72};
  return {job("front_frame_4000x3000", 0.28, {ChainFrame::Side::kFront, front, kHot}),
          job("front_frame_4000x3000_cold", 0.32, {ChainFrame::Side::kFront, front, kCold}),
          job("front_frame_1920x1080", 0, {ChainFrame::Side::kFront, {1920, 1080, 256, 144}, kHot}),
          job("front_frame_640x480", 0, {ChainFrame::Side::kFront, {640, 480, 256, 192}, kHot}),
          job("front_frame_1440x1080", 0, {ChainFrame::Side::kFront, {1440, 1080, 256, 192}, kHot}),
          job("back_frame_1920x1080", 0.30, {ChainFrame::Side::kBack, back, kHot})};
}

}  // namespace bench
