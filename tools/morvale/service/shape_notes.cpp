#include "service/shape_notes.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

namespace tool {
namespace {

constexpr int kCellPixels = 4;  ///< network-input pixels a label-map cell spans in each direction
constexpr const char* kCure = "--crop 4:3 or --crop 16:9 cuts out a frame of a better shape.";

std::string formatted(const char* format, auto... values) {
  char text[512];
  std::snprintf(text, sizeof text, format, values...);
  return text;
}

/// The front camera's boxes are scaled by the width in both directions, the back camera's across.
std::string portrait_note(const Geometry& geometry) {
  const bool back = geometry.pad_size == 128;
  return formatted(
      "A portrait frame: the library enlarges %s by %.2f (width / %d), but the picture was shrunk by %.2f. "
      "%s. %s",
      back ? "the person's box across" : "boxes", double(geometry.width) / geometry.pad_size,
      geometry.pad_size, double(geometry.height) / geometry.pad_size,
      back ? "The box lies left of the person, the grid's right part beside the picture"
           : "Boxes lie left of and above the faces; luma, and whatever the camera's faces select, is taken "
             "from "
             "beside them",
      kCure);
}

std::string rows_note(const Geometry& geometry) {
  const int filled = static_cast<int>(std::lround(double(geometry.shrunk_height) / kCellPixels));
  const int analysed = geometry.seg_factor;
  if (analysed * kCellPixels > geometry.shrunk_height)
    return formatted(
        "The picture fills %d rows of the label map, but the library analyses %d. The rows below the picture "
        "mirror "
        "it, and count in every share. %s",
        filled, analysed, kCure);
  return formatted(
      "The picture fills %d rows of the label map, but the library analyses %d. The lowest %.0f %% of the "
      "frame are "
      "not looked at. %s",
      filled, analysed, 100 * (1 - analysed_height(geometry) / geometry.height), kCure);
}

}  // namespace

double analysed_height(const Geometry& geometry) {
  if (geometry.shrunk_height < 1 || geometry.seg_factor < 1) return geometry.height;
  return std::min<double>(
      geometry.height, double(geometry.seg_factor) * kCellPixels * geometry.height / geometry.shrunk_height);
}

std::vector<std::string> shape_notes(const Geometry& geometry) {
  if (geometry.shrunk_height < 1 || geometry.seg_factor < 1) return {};
  std::vector<std::string> notes;
  if (geometry.height > geometry.width) notes.push_back(portrait_note(geometry));
  if (geometry.seg_factor * kCellPixels != geometry.shrunk_height) notes.push_back(rows_note(geometry));
  return notes;
}

}  // namespace tool
