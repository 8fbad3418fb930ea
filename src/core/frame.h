/// A caller's frame, checked: what of the record the shrink may read.
#pragma once

#include <cstdint>
#include <optional>

#include <morvale/core/records.h>
#include "imgproc/resample.h"

namespace morvale {

struct Frame {
  int32_t width, height;
  SourcePlane luma, chroma;
};

/// Empty for a frame that cannot be read: a null plane, a size below 1, sizes whose byte counts or Q8
/// positions leave int32, or, where the stride has to find the chroma plane, a stride that is negative or
/// leads out of int32.
std::optional<Frame> usable_frame(const MorvaleData_t& record);

/// Bytes from one luma row of the record to the next.
inline int32_t row_bytes(const MorvaleData_t& record) {
  return record.stride == 0 ? record.width : record.stride;
}

/// Bytes of the record's luma plane: `height` rows of `stride` bytes, or of `width` where the stride is no
/// row length (below the width, 2^23 and above, or leading out of int32). 0 when there is no plane or it is
/// none that a frame could have. Debug drawings stay inside.
int64_t luma_plane_bytes(const MorvaleData_t& record);

}  // namespace morvale
