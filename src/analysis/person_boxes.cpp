/// Person and face boxes of a six-label map, and their outlines in the caller's picture. Exported for
/// callers; no frame passes here.
#include <algorithm>

#include <morvale/core/morvale_core.h>
#include "rules/label_wins.h"
#include "analysis/map_figures.h"
#include "analysis/region_labeller.h"
#include "analysis/scratch.h"
#include "core/frame.h"
#include "core/numeric.h"

namespace morvale {
namespace {

constexpr size_t kMaxFaceBoxes = 4;

struct Scores {
  int c0, c1, c2, c3, c4, c5;
};

bool is_person(const Scores& s) {
  return wins(s.c1, s.c0, s.c5) || wins(s.c2, s.c0, s.c5) || wins(s.c3, s.c0, s.c5) || wins(s.c4, s.c0, s.c5);
}

/// Unlike on the front camera's path no minimum score is asked for.
bool is_face(const Scores& s) {
  return wins(s.c2, s.c0, s.c1, s.c3, s.c4, s.c5) || wins(s.c3, s.c0, s.c1, s.c2, s.c4, s.c5);
}

/// Labels 3 and 5 take no part, on purpose.
bool is_human(const Scores& s) { return !wins(s.c0, s.c1, s.c2, s.c4); }

/// A box outline as the callers of the drawing methods give it: right and bottom are one past it.
struct Outline {
  int left, right, top, bottom;
};

Outline outline_of(const FaceRect& box) {
  const auto last = [](int32_t first, int32_t size) {
    return to_int32(static_cast<double>(int64_t{first} + size - 1));
  };
  return {box.x, last(box.x, box.w), box.y, last(box.y, box.h)};
}

/// Draws an outline two pixels wide. Only the far edges are limited before the drawing, so that a box outside
/// the picture still leaves its trace at the border; single pixels outside the luma plane are dropped.
void draw_outline(const MorvaleData_t* data, Outline box, uint8_t value) {
  if (data == nullptr) return;
  const MorvaleData_t& record = *data;
  const int stride = row_bytes(record);
  const int64_t plane_bytes = luma_plane_bytes(record);
  if (plane_bytes == 0 || stride < 1) return;
  const int left = std::min(box.left, stride - 1), right = std::min(box.right, stride - 1);
  const int top = std::min(box.top, record.height - 1), bottom = std::min(box.bottom, record.height - 1);
  for (int y = std::max(top, 0); y < bottom; ++y) {
    const int64_t offset = int64_t{y} * stride, in_plane = std::min<int64_t>(stride, plane_bytes - offset);
    if (in_plane < 1) return;
    uint8_t* row = record.yPlane + offset;
    const auto fill = [&](int64_t first, int64_t end) {
      for (int64_t x = std::max<int64_t>(first, 0); x < std::min(end, in_plane); ++x) row[x] = value;
    };
    const bool edge = y - int64_t{top} < 2 || bottom - int64_t{y} <= 2;
    if (edge) {
      fill(left, right);
    } else {
      fill(left, int64_t{left} + 2);
      fill(int64_t{right} - 1, int64_t{right} + 1);
    }
  }
}

}  // namespace
}  // namespace morvale

using namespace morvale;

void MorvaleCore::WriteFaceInfo_DL(void* /*unusedA*/, void* /*unusedB*/, int left, int right, int top,
                                   int bottom) {
  draw_outline(inputData, {left, right, top, bottom}, 0);
}

void MorvaleCore::WriteFaceInfo_HW(void* /*unusedA*/, void* /*unusedB*/, int left, int right, int top,
                                   int bottom, int /*unusedC*/) {
  draw_outline(inputData, {left, right, top, bottom}, 255);
}

void MorvaleCore::DL_Human_Calc(uint8_t* c0, uint8_t* c1, uint8_t* c2, uint8_t* c3, uint8_t* c4, uint8_t* c5,
                                uint8_t* /*unusedA*/, uint8_t* /*unusedB*/, uint8_t* P, int W, int H, int k) {
  const size_t pixels = W < 1 || H < 1 ? 0 : static_cast<size_t>(W) * static_cast<size_t>(H);
  Scratch scratch(pixels * 2 * (sizeof(int32_t) + 1));
  SummedArea person_sums(scratch.take<int32_t>(pixels), W), face_sums(scratch.take<int32_t>(pixels), W);
  RegionTable persons, faces;
  RegionLabeller person_labeller(scratch.take<uint8_t>(pixels), W, persons);
  RegionLabeller face_labeller(scratch.take<uint8_t>(pixels), W, faces);

  int32_t humans = 0;
  for (int y = 0, i = 0; y < H; ++y) {
    for (int x = 0; x < W; ++x, ++i) {
      const Scores scores{c0[i], c1[i], c2[i], c3[i], c4[i], c5[i]};
      P[i] = is_person(scores);
      person_sums.add(x, y, P[i] != 0);
      face_sums.add(x, y, is_face(scores));
      humans += is_human(scores);
    }
  }
  result.humanRatio = per_cent(humans, static_cast<int32_t>(pixels));

  for (int y = 0; y < H; ++y) {
    for (int x = 0; x < W; ++x) {
      person_labeller.visit(x, y, near_window(person_sums, x, y, W, H) >= 1);
      face_labeller.visit(x, y, near_window(face_sums, x, y, W, H) >= 1);
    }
  }

  const auto multiplier = static_cast<float>(k);
  int32_t* record_box = result.meta[0].box;
  int32_t kept = 0;
  const RegionList by_area = persons.by_area();
  if (by_area.empty()) {
    std::fill(record_box, record_box + 4, 0);
  } else {
    if (by_area[0].area >= kMinBoxArea) {
      personBoxes[kept++] = frame_box(persons[by_area[0].label], scaleRatio, multiplier);
    }
    // A region that is too small leaves the former box, which is drawn and reported all the same.
    const FaceRect& box = personBoxes[0];
    const Outline o = outline_of(box);
    WriteFaceInfo_DL(nullptr, nullptr, o.left, o.right, o.top, o.bottom);
    const int32_t words[4] = {box.x, box.y, box.w, box.h};
    std::copy(std::begin(words), std::end(words), record_box);
  }

  const RegionList face_list = faces.by_area();
  for (size_t i = 0; i < std::min(face_list.size(), kMaxFaceBoxes); ++i) {
    if (!is_face_sized(face_list[i].area, face_list[0].area)) continue;
    personBoxes[kept++] = frame_box(faces[face_list[i].label], scaleRatio, multiplier);
  }
  personCount = kept;
  // Slot 0 is never drawn white, even where it holds a face because no person was kept.
  for (int32_t i = 1; i < kept; ++i) {
    const Outline o = outline_of(personBoxes[i]);
    WriteFaceInfo_HW(nullptr, nullptr, o.left, o.right, o.top, o.bottom, 0);
  }
}
