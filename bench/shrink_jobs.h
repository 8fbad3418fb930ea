/// The shrink's ways, for its own jobs, the frames and the curves.
#pragma once

#include <libyuv.h>

#include <opencv2/imgproc.hpp>

#include "bench/job.h"

namespace bench {

struct ShrinkSize {
  int width, height, dst_width, dst_height;
};

Way our_shrink(ShrinkSize size, size_t frames);
Way libyuv_shrink(ShrinkSize size, size_t frames, libyuv::FilterMode filter);
Way opencv_shrink(ShrinkSize size, size_t frames, cv::InterpolationFlags filter);

/// Loads the source rows that the rule needs and fills the result.
Way shrink_floor(ShrinkSize size, size_t frames);

}  // namespace bench
