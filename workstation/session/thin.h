/// The thin form of a frame's pixels: the samples that the library reads of it, and where they lie.
/// Everything else of the frame is left out, so a frame of 12 megapixels takes 265 kB.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

namespace morvale::session {

/// The samples of one plane: every column of `columns` in every row of `rows`, both ascending. A sample lies
/// row * row_bytes + channels * column bytes behind the plane's first byte; one that would reach past the
/// plane is the last of its row that does not.
struct ThinPlane {
  uint32_t offset = 0;     ///< where the plane begins in the frame's pixels
  uint32_t bytes = 0;      ///< how far it may be read
  uint32_t row_bytes = 0;  ///< from one row to the next
  std::vector<uint32_t> rows, columns;
};

struct ThinFrame {
  ThinPlane luma;                ///< samples of one byte
  ThinPlane chroma;              ///< of two
  std::vector<uint8_t> samples;  ///< of luma, row by row, then of chroma
};

/// Takes the samples of planes that begin at `luma` and `chroma`.
void take_samples(ThinFrame& frame, const uint8_t* luma, const uint8_t* chroma);

/// `size` bytes of pixels with the samples where they lie. For the eye every other byte of the planes is that
/// of the sample left of or above it.
std::vector<uint8_t> thick_pixels(const ThinFrame& frame, size_t size);

/// The form in files (docs/session-bundle.md).
std::vector<uint8_t> thin_bytes(const ThinFrame& frame);

/// Throws std::runtime_error for what is none, or has samples outside of `pixel_bytes` bytes of pixels.
ThinFrame parse_thin(std::span<const uint8_t> bytes, uint64_t pixel_bytes);

}  // namespace morvale::session
