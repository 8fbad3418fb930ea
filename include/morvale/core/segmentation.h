/// Steps around the network's input and output. The two smoothing steps run on every frame; the others are
/// exported for callers and are not used inside the library. Floating point must round to nearest, as it does
/// unless the calling thread was set otherwise.
#pragma once

#include <cstdint>

#include <morvale/core/export.h>

/// Blends a label map with the previous frame's, in place. Both maps hold NETSIZE x NETSIZE cells of five
/// bytes. With frameCount below 2 the current map is copied into the previous one and nothing else happens.
/// Otherwise, per cell, S = sum of the five |current - previous|, D = (S + 2) / 4 kept as a byte (319 wraps
/// to 63), W = max(256 - 2 * D, 0), and every byte becomes (W * previous + (256 - W) * current) >> 8. The
/// third argument is never read. Returns `current`.
MORVALE_API uint8_t* segmetationIIR_Front(uint8_t* current, uint8_t* previous, void* unused, int frameCount);

/// The same with D = (S + 2) / 5, which never exceeds 255.
MORVALE_API uint8_t* segmetationIIR_Back(uint8_t* current, uint8_t* previous, void* unused, int frameCount);

/// floats[i] = bytes[i] * (1 / 127.5) - 1 in float32, for i in [0, n * n * 3) rounded up to a multiple of 8:
/// both buffers must have room for that. Nothing happens when n * n * 3 < 1. Returns `bytes`.
MORVALE_API uint8_t* normalizeInput(uint8_t* bytes, float* floats, int n);

/// bytes[i] = low 8 bits of trunc((floats[i] + 10) * 12.75), not clamped (+11 gives 267, kept as 11), for i
/// in [0, n * n * 2) rounded up to a multiple of 8: both buffers must have room for that. Returns `floats`.
MORVALE_API float* normalizeOutput(float* floats, uint8_t* bytes, int n);

/// bytes[i] = trunc(clamp((floats[i] + 10) * 255 / 20, 0, 255)) in float32, for i in
/// [0, NETSIZE * channels * NETSIZE); NaN gives 0. Nothing is written when the count is below 1. Returns 0.
MORVALE_API int getOutputArr(float* floats, uint8_t* bytes, int channels);

/// The shrunk size that fits a frame into PADSIZE and the label-map rows that it fills. With a = frame height
/// and b = frame width: first = shrunk height, second = shrunk width (round half away from zero), factor by
/// table: first 96, 128, 72 give 24, 32, 18 and anything else 15 when PADSIZE is 128; first 192, 144, 256
/// give 48, 36, 64 and anything else 28 otherwise.
MORVALE_API void calcSegFactor(int a, int b, int& first, int& second, int& factor);

/// Wall-clock time in whole milliseconds.
MORVALE_API int64_t currentTimeInMilliseconds();

/// Debug loader: reads the whole of "/data/vendor/camera/inarray.raw" into `buffer`, which must be large
/// enough; `size` is ignored. Ends the process with exit status 1 when the file cannot be opened, is empty or
/// cannot be read in full. Returns the result of closing the file.
MORVALE_API int loadInputData(uint8_t* buffer, int size);
