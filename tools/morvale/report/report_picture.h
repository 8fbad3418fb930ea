/// The pictures of a report, kept within the room that the page has for them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace tool {

class ReportPictures {
 public:
  explicit ReportPictures(int expected_frames);

  /// Takes the next frame's picture: NV21 as the library reads it, rows of `width` bytes, chroma behind
  /// height * stride bytes. An empty frame has none.
  void add(std::span<const uint8_t> nv21, int width, int height, int stride);

  /// Leaves pictures out, every second one at a time, until the rest takes no more than so many bytes.
  void fit(size_t bytes);

  /// The place of each frame's picture in pictures().
  const std::vector<std::optional<size_t>>& places() const { return places_; }
  /// JPEG files.
  const std::vector<std::vector<uint8_t>>& pictures() const { return pictures_; }

 private:
  void thin_out();

  size_t room_for_one_;
  size_t bytes_ = 0;
  size_t every_ = 1;  ///< only every so many frames keep a picture
  std::vector<std::optional<size_t>> places_;
  std::vector<std::vector<uint8_t>> pictures_;
};

}  // namespace tool
