/// The steps of a frame's road as libyuv does them.
#pragma once

#include <libyuv.h>

#include <cstdint>

#include "bench/pictures.h"

namespace bench::yuv {

/// NV21 to interleaved RGB, full range.
void nv21_to_rgb(const uint8_t* nv21, uint8_t* rgb, int width, int height);

/// The same; `margin` rows below the picture are its last rows upside down.
void nv21_to_rgb_padded(const uint8_t* nv21, uint8_t* rgb, int width, int height, int margin);

void shrink(const uint8_t* nv21, int width, int height, uint8_t* dst, int dst_width, int dst_height,
            libyuv::FilterMode filter);

void enlarge(const uint8_t* plane, int width, int height, uint8_t* dst, int factor);

/// Four times as twice two times, for which libyuv has row functions of its own. `half` is its scratch.
void quadruple(const uint8_t* plane, int width, int height, Bytes& half, uint8_t* dst);

}  // namespace bench::yuv
