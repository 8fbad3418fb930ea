/// Person and face boxes of a six-label map, and their outlines in the caller's picture. Exported for
/// callers; no frame passes here.
#include <algorithm>

#include <morvale/core/morvale_core.h>
#include "analysis/bit_rows.h"
#include "analysis/grow_rows.h"
#include "analysis/map_figures.h"
#include "analysis/run_labeller.h"
#include "analysis/scratch.h"
#include "core/frame.h"
#include "core/numeric.h"
#include "rules/label_wins.h"

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

/// The two masks of a six-label map, as they are found and then grown.
struct Masks {
  BitRows persons, faces;
};

void put(const BitRows& mask, int x, int y, bool set) {
  uint64_t& word = mask.column(x / BitRows::kBits)[y];
  if (x % BitRows::kBits == 0) word = 0;
  word |= uint64_t{set} << (x % BitRows::kBits);
}

/// Writes the person mask, to `person_pixels` too. Returns the pixels of the human share.
int32_t classify(const uint8_t* const (&c)[6], uint8_t* person_pixels, const Masks& masks) {
  int32_t humans = 0;
  ptrdiff_t i = 0;
  for (int y = 0; y < masks.persons.height; ++y) {
    for (int x = 0; x < masks.persons.width; ++x, ++i) {
      const Scores scores{c[0][i], c[1][i], c[2][i], c[3][i], c[4][i], c[5][i]};
      person_pixels[i] = is_person(scores);
      put(masks.persons, x, y, is_person(scores));
      put(masks.faces, x, y, is_face(scores));
      humans += is_human(scores);
    }
  }
  return humans;
}

/// What a six-label map holds.
struct People {
  int32_t human_ratio;
  RegionTable persons, faces;
};

People find_people(const uint8_t* const (&planes)[6], uint8_t* person_pixels, int W, int H) {
  const int width = W < 1 || H < 1 ? 0 : W, height = W < 1 || H < 1 ? 0 : H;
  const size_t words = BitRows::size(width, height), room = grow_near_room(width, height);
  Scratch scratch((2 * words + room) * sizeof(uint64_t));
  const Masks masks{{scratch.take<uint64_t>(words), width, height},
                    {scratch.take<uint64_t>(words), width, height}};
  uint64_t* grow_room = scratch.take<uint64_t>(room);

  People people;
  people.human_ratio = per_cent(classify(planes, person_pixels, masks), wrapping_product(width, height));
  grow_near(masks.persons, grow_room);
  label_regions(masks.persons, people.persons, nullptr);
  grow_near(masks.faces, grow_room);
  label_regions(masks.faces, people.faces, nullptr);
  return people;
}

/// Adds the boxes of the largest faces to `boxes`, from number `kept` on. Returns how many there are then.
int32_t add_face_boxes(const RegionTable& faces, float scale, float multiplier, FaceRect* boxes,
                       int32_t kept) {
  const RegionList by_area = faces.by_area();
  for (size_t i = 0; i < std::min(by_area.size(), kMaxFaceBoxes); ++i) {
    if (!is_face_sized(by_area[i].area, by_area[0].area)) continue;
    boxes[kept++] = frame_box(faces[by_area[i].label], scale, multiplier);
  }
  return kept;
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
  const People people = find_people({c0, c1, c2, c3, c4, c5}, P, W, H);
  result.humanRatio = people.human_ratio;

  const auto multiplier = static_cast<float>(k);
  int32_t* record_box = result.meta[0].box;
  int32_t kept = 0;
  const RegionList by_area = people.persons.by_area();
  if (by_area.empty()) {
    std::fill(record_box, record_box + 4, 0);
  } else {
    if (by_area[0].area >= kMinBoxArea) {
      personBoxes[kept++] = frame_box(people.persons[by_area[0].label], scaleRatio, multiplier);
    }
    // A region that is too small leaves the former box, which is drawn and reported all the same.
    const FaceRect& box = personBoxes[0];
    const Outline o = outline_of(box);
    WriteFaceInfo_DL(nullptr, nullptr, o.left, o.right, o.top, o.bottom);
    const int32_t words[4] = {box.x, box.y, box.w, box.h};
    std::copy(std::begin(words), std::end(words), record_box);
  }

  personCount = add_face_boxes(people.faces, scaleRatio, multiplier, personBoxes, kept);
  // Slot 0 is never drawn white, even where it holds a face because no person was kept.
  for (int32_t i = 1; i < personCount; ++i) {
    const Outline o = outline_of(personBoxes[i]);
    WriteFaceInfo_HW(nullptr, nullptr, o.left, o.right, o.top, o.bottom, 0);
  }
}
