/// Frames, answers of the runtime and orders of calls as nobody should make them, within what the contract
/// bears.
#pragma once

#include <climits>
#include <cmath>
#include <functional>
#include <memory>

#include "fakes/platform_double.h"
#include "fuzz/draws.h"

namespace any_session {

using Bytes = std::vector<uint8_t>;

/// Planes of exactly the bytes that the record names, and now and then a record that names none.
struct Frame {
  MorvaleData_t record{};
  Bytes luma, chroma;

  void draw(Draws& draws) {
    const int width = 1 + draws.below(70), height = 1 + draws.below(50);
    record = {};
    record.cameraType = draws.below(3) == 1 ? morvale::kFrontCamera : 0;
    record.width = width;
    record.height = height;
    record.isUDC = draws.below(2);
    record.gateLevel = draws.one_of<float>({0, 0, 0, 25, 26, NAN, INFINITY, -INFINITY});
    record.stride = draws.one_of({0, 0, width, width + 5, width / 2, INT_MAX, INT_MIN, -1});
    if (height == 1 && record.stride == INT_MAX) record.stride = 0;  // that long a row may be meant
    record.faceCount = draws.one_of({0, 1, 2, 3, 5, 6, -1, INT_MAX});
    for (FaceRect& face : record.faces) {
      face = {draws.below(80), draws.below(60), draws.below(90), draws.below(70)};
      if (draws.below(8) == 1) face = draws.any<FaceRect>();
    }
    draw_planes(draws);
    const int spoilt = draws.below(24);
    if (spoilt == 1) record.yPlane = nullptr;
    if (spoilt == 2) record.uvPlane = nullptr;
    if (spoilt == 3) record.width = -width;
    if (spoilt == 4) record.height = draws.one_of({0, -1, INT_MIN, INT_MAX});
  }

 private:
  void draw_planes(Draws& draws) {
    const bool is_row = record.stride >= record.width && record.stride < INT_MAX;
    const bool is_short = record.stride > 0 && record.stride < record.width;
    const int luma_bytes = record.height * (is_row ? record.stride : record.width);
    const int chroma_begin = is_short ? record.height * record.stride : luma_bytes;
    const int chroma_bytes = record.width * (record.height / 2);
    const bool joined = draws.below(2) == 0;
    const int all = joined ? std::max(luma_bytes, chroma_begin + chroma_bytes) : luma_bytes;
    luma = draws.noise(static_cast<size_t>(all));
    chroma = draws.noise(static_cast<size_t>(chroma_bytes));
    record.yPlane = luma.data();
    record.uvPlane = joined ? luma.data() : chroma.data();
  }
};

/// Rectangles in which one label wins, some with scores that are no numbers.
inline void draw_scores(Draws& draws, std::vector<float>& scores) {
  scores.assign(64 * 64 * 5, -10.0f);
  for (int count = draws.below(5); count > 0; --count) {
    const int left = draws.below(NETSIZE), right = std::min(left + draws.below(64), NETSIZE - 1);
    const int top = draws.below(NETSIZE), bottom = std::min(top + draws.below(64), NETSIZE - 1);
    const int label = draws.below(5);
    const float score = draws.one_of<float>({10, 9.9f, 6, 5.7f, 0, -3, 1e30f, NAN, INFINITY});
    for (int y = top; y <= bottom; ++y) {
      for (int x = left; x <= right; ++x) scores[static_cast<size_t>((y * NETSIZE + x) * 5 + label)] = score;
    }
  }
}

inline void draw_runtime(Draws& draws, fakes::Platform& p) {
  using enum fakes::Output;
  p.null_session = draws.below(16) == 1;
  p.open_result = draws.one_of({0, 0, 0, 0, 1, 2, -1, 77});
  p.execute_result = draws.one_of({0, 0, 0, 0, 0, 0, 1, -1});
  p.execute_us = draws.one_of({0, 0, 30'999, 31'000});
  p.output = draws.one_of({kLogits, kLogits, kLogits, kLogits, kNone, kNullData});
  p.shape.reset();
  if (draws.below(8) == 1) p.shape = {draws.any<int32_t>(), draws.below(70), draws.below(70), draws.below(7)};
  p.properties["persist.morvale.capture.debug"] = draws.one_of({"0", "1", "2", "-3", "junk"});
}

/// A caller that makes any call next.
struct Session {
  Frame frame;
  std::unique_ptr<MorvaleCore> core = std::make_unique<MorvaleCore>();
  std::vector<uint8_t> words;  ///< what the calls left, for comparison

  void note(const void* data, size_t size) {
    const auto* bytes = static_cast<const uint8_t*>(data);
    words.insert(words.end(), bytes, bytes + size);
  }
  void process() {
    const uint32_t frames = core->frameCount;
    const int result = core->Morvale_process();
    HOLDS(result == 0 || (result == -1 && core->frameCount == frames));
  }
  void call(Draws& draws) {
    const std::function<void()> calls[] = {
        [&] { core->Morvale_core_init(draws.below(8) == 1 ? nullptr : &frame.record); },
        [&] { core->Morvale_core_setModel(draws.below(3) == 1 ? 0 : frame.record.cameraType); },
        [&] { core->Morvale_core_deinit(); },
        [&] { core = std::make_unique<MorvaleCore>(); },
        [&] { draw_runtime(draws, fakes::platform()); },
        [&] { draw_scores(draws, fakes::platform().logits); },
        [&] { frame.draw(draws); },
        [&] { core->Morvale_core_afterProcss(); },
        [&] { process(); },
        [&] { process(), core->Morvale_core_afterProcss(); }};
    draws.one_of(calls)();
    PersonWholeMeta result;
    core->Morvale_core_getresult(&result);
    HOLDS(core->personCount >= 0 && core->personCount <= morvale::kMaxFaces && N0 >= 0 && N0 < 3);
    note(&result, sizeof result);
    note(core->personBoxes, sizeof core->personBoxes);
  }
};

}  // namespace any_session
