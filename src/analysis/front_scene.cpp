/// Front camera: from the label map to enlarged label planes, and on to the faces.
#include <algorithm>
#include <cstring>

#include <morvale/core/globals.h>
#include <morvale/core/morvale_core.h>
#include <morvale/imgproc/resize_plane.h>
#include "analysis/scratch.h"
#include "core/frame.h"
#include "core/lost_record.h"
#include "kernels/kernel_set.h"

namespace morvale {
namespace {

/// Debug view: copies a plane into the top-left corner of the caller's luma plane, inside the plane. A stride
/// of 0 lets every row land on row 0; a negative one leads out of the plane after it.
void paint(const uint8_t* plane, int width, int height, const MorvaleData_t& record) {
  const int64_t plane_bytes = luma_plane_bytes(record);
  for (int r = 0; r < height; ++r) {
    const int64_t offset = int64_t{r} * record.stride;
    const int64_t bytes = std::min<int64_t>(width, plane_bytes - offset);
    if (offset < 0 || bytes < 1) return;
    std::memcpy(record.yPlane + offset, plane + static_cast<ptrdiff_t>(r) * width,
                static_cast<size_t>(bytes));
  }
}

}  // namespace
}  // namespace morvale

using namespace morvale;

void MorvaleCore::argMax_human_onlySkin(uint8_t* rgb, uint8_t* shrunkFrame, uint8_t* segMap) {
  if (!has_record(inputData, "argMax_human_onlySkin")) return;
  const int width = NETSIZE, height = segFactor;
  const size_t cells = static_cast<size_t>(width) * static_cast<size_t>(height);
  constexpr size_t kEnlarged = 16;
  Scratch scratch(kLabels * cells * (1 + kEnlarged));
  uint8_t* planes[kLabels];
  uint8_t* large[kLabels];
  for (uint8_t*& plane : planes) plane = scratch.take<uint8_t>(cells);
  for (uint8_t*& plane : large) plane = scratch.take<uint8_t>(cells * kEnlarged);

  kernels().network.split(segMap, planes, static_cast<ptrdiff_t>(cells));
  for (int k = 0; k < kLabels; ++k) resize_y_4x_up(planes[k], large[k], width, height);
  DL_FD_Calc(large[0], large[1], large[2], large[3], large[4], shrunkFrame, rgb, 4 * width, 4 * height, 0);
  if (VISUALDEBUG >= 1) paint(large[2], 4 * width, 4 * height, *inputData);
}
