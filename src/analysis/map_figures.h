/// Figures that several analyses take from a map.
#pragma once

#include <cstdint>

#include <morvale/core/records.h>
#include "analysis/region_labeller.h"
#include "core/numeric.h"

namespace morvale {

/// The smallest box that counts as a face or person, as width x height without +1.
constexpr int32_t kMinBoxArea = 101;

/// A face must exceed the largest candidate's area divided by this.
constexpr int32_t kLargestShare = 8;

/// Whether a candidate is large enough to be a face, on its own and beside the largest one.
inline bool is_face_sized(int32_t area, int32_t largest) {
  return area >= kMinBoxArea && area > largest / kLargestShare;
}

/// count / of in float32, truncated; 0 of an empty map.
inline int32_t per_cent(int32_t count, int32_t of) {
  return of < 1 ? 0 : to_int32(static_cast<float>(count) / static_cast<float>(of) * 100.0f);
}

/// A region's box in frame pixels: float32 products, truncated, `scale` before `multiplier`.
inline FaceRect frame_box(const Region& box, float scale, float multiplier = 1.0f) {
  const auto scaled = [&](int32_t v) { return to_int32(static_cast<float>(v) * scale * multiplier); };
  return {scaled(box.min_x), scaled(box.min_y), scaled(box.max_x - box.min_x), scaled(box.max_y - box.min_y)};
}

}  // namespace morvale
