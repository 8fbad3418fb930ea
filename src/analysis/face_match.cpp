/// Front camera: which rectangle of which face is measured. Matches the camera's faces with the boxes that
/// the segmentation found.
#include <algorithm>
#include <cstdlib>

#include <morvale/core/morvale_core.h>
#include "core/lost_record.h"
#include "core/numeric.h"
#include "platform/log.h"

namespace morvale {
namespace {

/// Faces that get figures of their own.
constexpr int kMeasuredFaces = 3;

/// Inclusive edges in frame pixels. 64 bits, so that the sums of a broken record's rectangle stay exact.
struct Edges {
  int64_t left, top, right, bottom;
};

Edges edges_of(const FaceRect& r) { return {r.x, r.y, int64_t{r.x} + r.w - 1, int64_t{r.y} + r.h - 1}; }

struct FaceList {
  Edges faces[kMaxFaces];
  int count = 0;
};

FaceList camera_faces(const MorvaleData_t& record) {
  if (record.faceCount < 0 || record.faceCount > kMaxFaces) {
    MORVALE_ERROR("[NON ERROR] Morvale faceCount [%d] out of range in process", record.faceCount);
  }
  FaceList list;
  list.count = std::clamp(record.faceCount, 0, kMaxFaces);
  for (int j = 0; j < list.count; ++j) list.faces[j] = edges_of(record.faces[j]);
  return list;
}

/// Whether the face, made smaller on every side by a sixth of its width, lies inside the box.
bool matches(const FaceRect& box, const Edges& face, int32_t face_width) {
  const int32_t margin = face_width / 6;
  return face.bottom - margin < int64_t{box.y} + box.h && face.top + margin >= box.y &&
         face.right - margin < int64_t{box.x} + box.w && face.left + margin >= box.x;
}

FaceList matched_faces(const FaceRect& box, const FaceList& faces, const MorvaleData_t& record) {
  FaceList matched;
  for (int j = 0; j < faces.count; ++j) {
    if (matches(box, faces.faces[j], record.faces[j].w)) matched.faces[matched.count++] = faces.faces[j];
  }
  return matched;
}

/// The camera's face, cut at the frame. The bottom edge is limited by the frame's width, not its height; kept
/// on purpose.
Edges clipped(const Edges& face, int32_t frame_width) {
  const int64_t last = int64_t{frame_width} - 1;
  return {std::max<int64_t>(face.left, 0), std::max<int64_t>(face.top, 0), std::min(face.right, last),
          std::min(face.bottom, last)};
}

/// Grows one direction of a face toward a larger box, on both sides by the gap at the far side, at most by a
/// quarter of the face; the far side by no more than the near one really moved.
void grow(int64_t& near_edge, int64_t& far_edge, int64_t box_far_edge, int32_t frame_size) {
  const int64_t quarter = (far_edge - near_edge) >> 2;
  const int64_t step = std::min(std::abs(box_far_edge - far_edge), quarter);
  const int64_t grown = std::max<int64_t>(near_edge - step, 0);
  far_edge = std::min(far_edge + std::min(std::abs(grown - near_edge), quarter), int64_t{frame_size} - 1);
  near_edge = grown;
}

/// The rectangle to measure for a box that exactly one camera face matches.
Edges fused(const FaceRect& box, const Edges& face, const MorvaleData_t& record) {
  const Edges box_edges = edges_of(box);
  const int32_t box_area = wrapping_product(int64_t{box.w} - 1, int64_t{box.h} - 1);
  const int32_t face_area = wrapping_product(face.right - face.left, face.bottom - face.top);
  if (int64_t{2} * box_area < face_area) return clipped(face, record.width);
  if (box_area > to_int32(static_cast<double>(static_cast<float>(face_area)) * 1.5)) {
    Edges grown = face;
    grow(grown.left, grown.right, box_edges.right, record.width);
    grow(grown.top, grown.bottom, box_edges.bottom, record.height);
    return grown;
  }
  return box_edges;
}

/// A frame coordinate as label-map coordinate, limited to 0 .. size - 1.
int to_map(int64_t edge, float scale, int size) {
  return std::min(std::max(to_int32(static_cast<float>(edge) / scale), 0), size - 1);
}

/// The rectangles to measure, in the order of the record's blocks, and what `ver` is to tell.
struct Choice {
  FaceList measured;
  int dropped = 0;  ///< matched faces that had no block left
};

/// Without boxes the camera's faces are taken as they are.
Choice choose_faces(const FaceRect* boxes, int box_count, const MorvaleData_t& record) {
  const FaceList faces = camera_faces(record);
  if (box_count == 0) return {faces};
  Choice choice;
  FaceList& measured = choice.measured;
  for (const FaceRect* box = boxes; box < boxes + box_count; ++box) {
    const FaceList matched = matched_faces(*box, faces, record);
    FaceList wanted = matched;
    if (matched.count < 2) {
      wanted = {{matched.count == 1 ? fused(*box, matched.faces[0], record) : edges_of(*box)}, 1};
    }
    for (int j = 0; j < wanted.count; ++j) {
      if (measured.count < kMeasuredFaces) {
        measured.faces[measured.count++] = wanted.faces[j];
      } else {
        choice.dropped += matched.count >= 2;
      }
    }
  }
  return choice;
}

}  // namespace
}  // namespace morvale

using namespace morvale;

void MorvaleCore::Intersection_Calc(uint8_t* c2, uint8_t* luma, uint8_t* rgb, uint8_t* faceMask, int W,
                                    int H) {
  if (!has_record(inputData, "Intersection_Calc")) return;
  const Choice choice = choose_faces(personBoxes, std::min(personCount, kMaxFaces), *inputData);
  for (int k = 0; k < choice.measured.count; ++k) {  // indices above 2 are passed on and have no effect
    const Edges& e = choice.measured.faces[k];
    WriteFaceInfo(c2, luma, rgb, faceMask, W, 0, to_map(e.left, scaleRatio, W),
                  to_map(e.right, scaleRatio, W), to_map(e.top, scaleRatio, H),
                  to_map(e.bottom, scaleRatio, H), k);
  }
  for (int k = 0; k < choice.dropped; ++k) MORVALE_DEBUG("Morvale interSection Over.");
  result.ver = choice.measured.count;
}
