/// The image kernels behind checks: the same names in namespace morvale::checked, with spans for pointers.
/// Each call works out how far its kernel reaches into every buffer, and runs the kernel, with the same
/// pixels, only if all of them are long enough. Otherwise it returns why not and writes nothing. That costs a
/// few integer operations a call, whatever the size of the picture. Header-only, no state, callable from any
/// thread.
///
/// The reach of a kernel in a buffer is the number of bytes up to and with the last one that it reads or
/// writes, so a buffer may lack what the kernel leaves alone (the unsampled last row of a halved picture,
/// say) and must have what it takes beyond the picture (the last block of NV21toBGR). An NV21 image in one
/// buffer has at least its luma plane. Where the formulas below say w and h they mean width and height;
/// divisions truncate, evenUp and eightUp round up to a multiple of 2 and 8.
///
/// Sizes of 0 are legal where the kernel writes nothing for them: kOk, and nothing is written. Negative sizes
/// never are. All sizes, strides, places and margins stay below kSizeEnd, those of the scaling to any size
/// below kScaledSizeEnd. Not checked: whether buffers overlap, which no kernel allows, and what is in them.
#pragma once

#include <morvale/checked/color_convert.h>
#include <morvale/checked/grid_blur.h>
#include <morvale/checked/reach.h>
#include <morvale/checked/resize.h>
#include <morvale/checked/rotate.h>
