/// What the shape of a frame does to its results.
#pragma once

#include <string>
#include <vector>

#include "service/camera_service.h"

namespace tool {

/// A note with its numbers for each way in which the results mislead: boxes of portrait frames,
/// label-map rows that are not analysed or hold no picture. Empty for 4:3, 16:9 and square frames, and for a
/// frame that was not analysed.
std::vector<std::string> shape_notes(const Geometry& geometry);

/// The frame's row below which nothing is analysed, in frame pixels; the frame's height where all of it is.
double analysed_height(const Geometry& geometry);

}  // namespace tool
