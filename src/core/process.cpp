/// One frame's way to its label map: gate, shrink, pad to RGB, normalise, run, scale to bytes, smooth.
#include <algorithm>
#include <optional>

#include <morvale/core/globals.h>
#include <morvale/core/morvale_core.h>
#include <morvale/core/segmentation.h>
#include <morvale/imgproc/color_convert.h>
#include "core/frame.h"
#include "core/frame_geometry.h"
#include "core/lost_record.h"
#include "core/session.h"
#include "imgproc/scale_nv21.h"
#include "kernels/kernel_set.h"
#include "platform/log.h"
#include "platform/rounding.h"
#include "platform/trace.h"

namespace morvale {
namespace {

/// The counter stands still while frames fail, so a message that asks this comes at every call or at none.
bool every_24th(uint32_t frame_count) { return frame_count % 24 == 0; }

/// A landscape picture is mirrored downwards into the square. A portrait one is not mirrored to the right:
/// its negative difference goes to the converter as it is, and the columns right of the picture keep what the
/// buffer held from earlier frames. The asymmetry is meant.
struct Margins {
  int32_t right, bottom;
};
Margins margins(const FrameGeometry& shrunk) {
  const int32_t difference = shrunk.width - shrunk.height;
  const int32_t margin = std::min(difference, shrunk.height);
  return difference > 0 ? Margins{0, margin} : Margins{margin, 0};
}

/// Whether the model's state lets no frame run. Logs the reason, and returns what
/// Morvale_process is to return; empty when the frame may run.
std::optional<int> refused(const MorvaleCore& core) {
  switch (core.status) {
    case 2:
      if (every_24th(core.frameCount)) MORVALE_ERROR("[NON ERROR] Morvale sluggish -> disable in process");
      return -1;
    case 1:
      if (every_24th(core.frameCount)) MORVALE_ERROR("[NON ERROR] Morvale model openFail in process");
      return -1;
    case -1:
      MORVALE_ERROR("[NON ERROR] Morvale model openFail in process1");
      return 0;
    default:
      return std::nullopt;
  }
}

/// Shrinks the frame, pads it into the square and normalises it.
void fill_input(MorvaleCore& core, const Frame& frame) {
  const FrameGeometry shrunk = frame_geometry(frame.height, frame.width, PADSIZE);
  const Margins margin = margins(shrunk);
  core.segFactor = shrunk.seg_factor;
  core.scaleRatio = static_cast<float>(frame.width) / static_cast<float>(PADSIZE);
  {
    const TraceMark mark("Morvale shrink");
    scale_nv21(frame.luma, frame.chroma, core.resizedFrame, frame.width, frame.height, shrunk.width,
               shrunk.height);
  }
  const TraceMark mark("Morvale colour");
  NV21toRGB_pad(core.resizedFrame, core.rgbInput, shrunk.width, shrunk.height, PADSIZE, PADSIZE, margin.right,
                margin.bottom);
  kernels().network.to_input(core.rgbInput, core.netInput, ptrdiff_t{PADSIZE} * PADSIZE * 3);
}

/// Scores become bytes in slot N0 of the camera's ring, blended with slot N1.
void store_labels(const float* scores, bool front, uint32_t frame_count) {
  const TraceMark mark("Morvale labels");
  uint8_t* ring = front ? N_segResult_Front : N_segResult_Back;
  uint8_t* current = ring + N0 * kRingSlotBytes;
  uint8_t* previous = ring + N1 * kRingSlotBytes;
  kernels().network.to_bytes(scores, current, ptrdiff_t{NETSIZE} * NETSIZE * kLabels);
  const auto smoothing = front ? segmetationIIR_Front : segmetationIIR_Back;
  smoothing(current, previous, nullptr, static_cast<int>(frame_count));
}

}  // namespace
}  // namespace morvale

using namespace morvale;

int MorvaleCore::Morvale_process() {
  const RoundToNearest rounding;
  const TraceMark mark("Morvale_process");
  if (!has_record(inputData, "process")) return -1;
  const MorvaleData_t& record = *inputData;
  if (record.gateLevel > kGateLimit) {
    result = {};
    frameCount = 0;  // the next analysed frame starts the smoothing afresh
    return 0;
  }
  if (const std::optional<int> verdict = refused(*this)) return *verdict;
  if (VISUALDEBUG >= 1) {
    MORVALE_DEBUG("morvale  width [%d]  height [%d] faceCount [%d]  stride [%d] ", record.width,
                  record.height, record.faceCount, record.stride);
  }
  const std::optional<Frame> frame = usable_frame(record);
  if (!frame) {
    MORVALE_ERROR("[NON ERROR] Morvale unusable frame: width [%d] height [%d] stride [%d] in process",
                  record.width, record.height, record.stride);
    return -1;
  }
  fill_input(*this, *frame);
  const float* scores = run_session(netInput);
  if (scores == nullptr) return -1;
  store_labels(scores, record.cameraType == kFrontCamera, frameCount);
  ++frameCount;
  return 0;
}
