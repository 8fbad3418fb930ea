/// Front camera: the faces that the segmentation itself sees.
#include <algorithm>

#include <morvale/core/morvale_core.h>
#include "analysis/bit_rows.h"
#include "analysis/grow_rows.h"
#include "analysis/map_figures.h"
#include "analysis/run_labeller.h"
#include "analysis/scratch.h"
#include "core/lost_record.h"
#include "kernels/kernel_set.h"

using namespace morvale;

void MorvaleCore::DL_FD_Calc(uint8_t* c0, uint8_t* c1, uint8_t* c2, uint8_t* c3, uint8_t* c4, uint8_t* luma,
                             uint8_t* rgb, int W, int H, int /*unused*/) {
  if (!has_record(inputData, "DL_FD_Calc")) return;
  const int width = W < 1 || H < 1 ? 0 : W, height = W < 1 || H < 1 ? 0 : H;
  const size_t pixels = static_cast<size_t>(width) * static_cast<size_t>(height);
  const size_t words = BitRows::size(width, height), room = grow_near_room(width, height);
  Scratch scratch((words + room) * sizeof(uint64_t) + pixels);
  const BitRows faces{scratch.take<uint64_t>(words), width, height};
  uint64_t* grow_room = scratch.take<uint64_t>(room);
  uint8_t* face_mask = scratch.take<uint8_t>(pixels);

  int64_t humans = 0;
  for (ptrdiff_t y = 0; y < height; ++y) {
    const ptrdiff_t row = y * width;
    const uint8_t* const scores[] = {c0 + row, c1 + row, c2 + row, c3 + row, c4 + row};
    humans += kernels().face.classify_faces(scores, face_mask + row, faces.words + y, height, width);
  }
  result.humanRatio = per_cent(static_cast<int32_t>(humans), static_cast<int32_t>(pixels));

  grow_near(faces, grow_room);
  RegionTable regions;
  label_regions(faces, regions, nullptr);

  personCount = 0;
  const RegionList candidates = regions.by_area();
  for (size_t i = 0; i < std::min<size_t>(candidates.size(), kMaxFaces); ++i) {
    if (!is_face_sized(candidates[i].area, candidates[0].area)) continue;
    personBoxes[personCount++] = frame_box(regions[candidates[i].label], scaleRatio);
  }
  Intersection_Calc(c2, luma, rgb, face_mask, W, H);
}
