#include <morvale/core/globals.h>
#include <morvale/core/morvale_core.h>
#include "core/lost_record.h"
#include "platform/log.h"
#include "platform/rounding.h"
#include "platform/trace.h"

using namespace morvale;

int MorvaleCore::Morvale_core_afterProcss() {
  if (frameCount == 0) {
    MORVALE_INFO("[Morvale] Reversal exec process skip current frame");
    return 0;
  }
  const RoundToNearest rounding;
  const TraceMark mark("Morvale_core_afterProcss");
  if (!has_record(inputData, "afterProcss")) return 0;
  // The camera type is read now: the record may have changed since Morvale_process.
  if (inputData->cameraType == kFrontCamera) {
    argMax_human_onlySkin(rgbInput, resizedFrame, N_segResult_Front + N0 * kRingSlotBytes);
  } else {
    argMax_back_only_human(N_segResult_Back + N0 * kRingSlotBytes);
  }
  N1 = N0;
  N0 = (N0 + 1) % kRingSlots;
  return 0;
}

int MorvaleCore::Morvale_core_getresult(PersonWholeMeta* out) {
  if (frameCount % 50 == 0 || VISUALDEBUG >= 1) {
    const PersonMeta& main = result.meta[0];
    MORVALE_DEBUG(
        "Morvale Ver %d |De %d : hsv : [%d ,%d, %d]  hsv min: [%d %d %d]  hsvmax [%d %d %d] face_Yavg : "
        "[%3d]  "
        "HumanRatio : [%2d] skinRatio [%d]",
        result.ver, personCount, main.hsv[0], main.hsv[1], main.hsv[2], main.hsvMin[0], main.hsvMin[1],
        main.hsvMin[2], main.box[0], main.box[1], main.box[2], main.faceYavg, result.humanRatio,
        main.skinRatio);
  }
  *out = result;
  return 1;
}
