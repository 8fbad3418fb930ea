/// Region finding in all ways, for its own jobs and the curves.
#pragma once

#include "bench/job.h"
#include "bench/pictures.h"

namespace bench {

Way our_faces(const ScoreMap& map, int width, int height);
Way opencv_faces(const ScoreMap& map, int width, int height, bool by_contours);

}  // namespace bench
