/// Morvale Capture: the one header a caller needs.
#pragma once

#include <morvale/analysis/hsv.h>
#include <morvale/analysis/regions.h>
#include <morvale/core/globals.h>
#include <morvale/core/morvale_core.h>
#include <morvale/core/records.h>
#include <morvale/core/segmentation.h>
#include <morvale/core/vexa_runtime.h>
#include <morvale/imgproc/color_convert.h>
#include <morvale/imgproc/grid_blur.h>
#include <morvale/imgproc/resize_nv21.h>
#include <morvale/imgproc/resize_plane.h>
#include <morvale/imgproc/rotate.h>
