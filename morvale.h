/// Morvale Capture: the one header a caller needs.
#pragma once

#include "analysis/hsv.h"
#include "analysis/regions.h"
#include "core/globals.h"
#include "core/morvale_core.h"
#include "core/records.h"
#include "core/segmentation.h"
#include "core/vexa_runtime.h"
#include "imgproc/color_convert.h"
#include "imgproc/grid_blur.h"
#include "imgproc/resize_nv21.h"
#include "imgproc/resize_plane.h"
#include "imgproc/rotate.h"
