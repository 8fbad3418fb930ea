/// Which samples of a frame its shrinking reads, for whoever keeps no others. Beside scale_nv21, whose steps
/// these are.
#pragma once

#include <cstdint>
#include <vector>

#include "imgproc/resample.h"

namespace morvale {

/// The samples of a plane at every column of `columns` in every row of `rows`; both ascend. Either may lead
/// past the plane, where SourceRows names what stands in.
struct SampledPlane {
  std::vector<int32_t> rows, columns;
};

struct SampledNv21 {
  SampledPlane luma, chroma;
};

/// The source positions that `count` destination samples in a row or column read. A bilinear neighbour of
/// weight 0 is none of them.
inline std::vector<int32_t> sampled_positions(int step, bool half_ratio, int count) {
  std::vector<int32_t> positions;
  const auto read = [&](int position) {
    if (positions.empty() || positions.back() < position) positions.push_back(position);
  };
  const int whole = step >> 8;
  for (int i = 0, p = 0, first = 0; i < count; ++i, p += step) {
    if (!half_ratio) {
      read(p >> 8);
      if ((p & 255) != 0) read((p >> 8) + 1);
    } else if (i % 2 == 0) {
      read(first);
    } else {
      read(first + whole);
      read(first + whole + 1);
      first += 2 * whole + 1;
    }
  }
  return positions;
}

/// Of a plane whose destination has `rows` rows of `width` bytes; a row may end inside a sample.
template <int kChannels>
SampledPlane sampled_plane(Steps step, int width, int rows) {
  const bool half_ratio = is_half_ratio(step);
  if (half_ratio) rows += rows & 1;  // averaged rows come in twos
  return {sampled_positions(step.y, half_ratio, rows),
          sampled_positions(step.x, half_ratio, (width + kChannels - 1) / kChannels)};
}

/// What scale_nv21 reads for these sizes.
inline SampledNv21 sampled_nv21(int srcWidth, int srcHeight, int dstWidth, int dstHeight) {
  const Steps step{q8_step(srcWidth, dstWidth), q8_step(srcHeight, dstHeight)};
  SampledNv21 sampled{sampled_plane<1>(step, dstWidth, dstHeight), {}};
  if (dstHeight >= 2 && dstWidth >= 1) sampled.chroma = sampled_plane<2>(step, dstWidth, dstHeight / 2);
  return sampled;
}

}  // namespace morvale
