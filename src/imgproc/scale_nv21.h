/// Scaling of a camera frame whose planes are known to end somewhere.
#pragma once

#include <cstdint>

#include "imgproc/resample.h"

namespace morvale {

/// The rule of resize_NV21_opt, kept inside the planes: see SourcePlane. Planes with an end serve frames that
/// come from outside; without one this is the exported function.
void scale_nv21(const SourcePlane& luma, const SourcePlane& chroma, uint8_t* dst, int srcWidth, int srcHeight,
                int dstWidth, int dstHeight);

}  // namespace morvale
