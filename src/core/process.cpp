/// One frame's way to its label map: gate, shrink, pad to RGB, normalise, run, scale to bytes, smooth.
#include <algorithm>

#include <morvale/core/globals.h>
#include <morvale/core/morvale_core.h>
#include <morvale/core/segmentation.h>
#include <morvale/imgproc/color_convert.h>
#include "core/frame.h"
#include "core/frame_geometry.h"
#include "imgproc/scale_nv21.h"
#include "kernels/kernel_set.h"
#include "platform/clock.h"
#include "platform/log.h"

namespace morvale {
namespace {

/// Above this gate value the camera service wants no analysis.
constexpr float kGateLimit = 25.0f;

/// A network run may take 30 ms; from this many whole milliseconds on it is logged as sluggish.
constexpr int64_t kSluggishRunMs = 31;

/// A message that would repeat on every frame is written only on every 24th.
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

/// Runs the session on `pixels`. Returns the scores of the run, or null when it failed. The scores are the
/// runtime's memory and outlive the descriptors.
const float* run_network(float* pixels) {
  const WallTime start = wall_time();
  input.data = pixels;
  inputs.clear();
  inputs.push_back(input);
  outputs.clear();
  const bool done = session_ != nullptr && session_->execute(inputs, outputs) == 0;
  const float* scores = done && !outputs.empty() ? static_cast<const float*>(outputs.front().data) : nullptr;
  if (scores == nullptr) {
    inputs.clear();
    outputs.clear();
    MORVALE_ERROR("Morvale vexa execute  fail");
    return nullptr;
  }
  if (elapsed_ms(start, wall_time()) >= kSluggishRunMs) {
    MORVALE_ERROR("Morvale frame dealy sluggish ->  disable");
    inputs.clear();
    outputs.clear();
  }
  return scores;
}

}  // namespace
}  // namespace morvale

using namespace morvale;

int MorvaleCore::Morvale_process() {
  if (inputData == nullptr) {
    MORVALE_ERROR("[NON ERROR] Morvale no frame record in process");
    return -1;
  }
  const MorvaleData_t& record = *inputData;
  if (record.gateLevel > kGateLimit) {
    result = {};
    frameCount = 0;  // the next analysed frame starts the smoothing afresh
    return 0;
  }
  switch (status) {
    case 2:
      if (every_24th(frameCount)) MORVALE_ERROR("[NON ERROR] Morvale sluggish -> disable in process");
      return -1;
    case 1:
      if (every_24th(frameCount)) MORVALE_ERROR("[NON ERROR] Morvale model openFail in process");
      return -1;
    case -1:
      MORVALE_ERROR("[NON ERROR] Morvale model openFail in process1");
      return 0;
    default:
      break;
  }
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

  const FrameGeometry shrunk = frame_geometry(frame->height, frame->width, PADSIZE);
  const Margins margin = margins(shrunk);
  segFactor = shrunk.seg_factor;
  scaleRatio = static_cast<float>(frame->width) / static_cast<float>(PADSIZE);
  scale_nv21(frame->luma, frame->chroma, resizedFrame, frame->width, frame->height, shrunk.width,
             shrunk.height);
  NV21toRGB_pad(resizedFrame, rgbInput, shrunk.width, shrunk.height, PADSIZE, PADSIZE, margin.right,
                margin.bottom);
  kernels().network.to_input(rgbInput, netInput, ptrdiff_t{PADSIZE} * PADSIZE * 3);

  const float* scores = run_network(netInput);
  if (scores == nullptr) return -1;

  const bool front = record.cameraType == kFrontCamera;
  uint8_t* ring = front ? N_segResult_Front : N_segResult_Back;
  uint8_t* current = ring + N0 * kRingSlotBytes;
  uint8_t* previous = ring + N1 * kRingSlotBytes;
  kernels().network.to_bytes(scores, current, ptrdiff_t{NETSIZE} * NETSIZE * kLabels);
  const auto smoothing = front ? segmetationIIR_Front : segmetationIIR_Back;
  smoothing(current, previous, nullptr, static_cast<int>(frameCount));
  ++frameCount;
  return 0;
}
