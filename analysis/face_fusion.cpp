/// Front camera: the faces that the segmentation itself sees.
#include <algorithm>

#include "analysis/label_wins.h"
#include "analysis/map_figures.h"
#include "analysis/region_labeller.h"
#include "analysis/scratch.h"
#include "core/morvale_core.h"

namespace morvale {
namespace {

/// The better of the two face scores must reach this, or the pixel is no face however clearly it wins.
constexpr int kMinFaceScore = 200;

struct Scores {
  int c0, c1, c2, c3, c4;
};

bool is_face(const Scores& s) {
  const bool won = wins(s.c2, s.c0, s.c1, s.c3, s.c4) || wins(s.c3, s.c0, s.c1, s.c2, s.c4);
  return won && std::max(s.c2, s.c3) >= kMinFaceScore;
}

/// Label 3 takes no part, on purpose: where it is second to none but the background, the pixel is no human.
bool is_human(const Scores& s) { return !wins(s.c0, s.c1, s.c2, s.c4); }

}  // namespace
}  // namespace morvale

using namespace morvale;

void MorvaleCore::DL_FD_Calc(uint8_t* c0, uint8_t* c1, uint8_t* c2, uint8_t* c3, uint8_t* c4, uint8_t* luma,
                             uint8_t* rgb, int W, int H, int /*unused*/) {
  const size_t pixels = W < 1 || H < 1 ? 0 : static_cast<size_t>(W) * static_cast<size_t>(H);
  Scratch scratch(pixels * (sizeof(int32_t) + 2));
  SummedArea sums(scratch.take<int32_t>(pixels), W);
  uint8_t* face_mask = scratch.take<uint8_t>(pixels);
  RegionLabeller labeller(scratch.take<uint8_t>(pixels), W);

  int32_t humans = 0;
  for (int y = 0, i = 0; y < H; ++y) {
    for (int x = 0; x < W; ++x, ++i) {
      const Scores scores{c0[i], c1[i], c2[i], c3[i], c4[i]};
      const bool face = is_face(scores);
      face_mask[i] = face ? 255 : 0;
      sums.add(x, y, face);
      humans += is_human(scores);
    }
  }
  result.humanRatio = per_cent(humans, static_cast<int32_t>(pixels));

  for (int y = 0; y < H; ++y) {
    for (int x = 0; x < W; ++x) labeller.visit(x, y, near_window(sums, x, y, W, H) >= 1);
  }

  personCount = 0;
  const std::vector<info> candidates = labeller.by_area();
  for (size_t i = 0; i < std::min<size_t>(candidates.size(), kMaxFaces); ++i) {
    if (!is_face_sized(candidates[i].area, candidates[0].area)) continue;
    personBoxes[personCount++] = frame_box(labeller[candidates[i].label], scaleRatio);
  }
  Intersection_Calc(c2, luma, rgb, face_mask, W, H);
}
