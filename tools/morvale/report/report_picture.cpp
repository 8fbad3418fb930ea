#include "report/report_picture.h"

#include <algorithm>

#include "pictures/opencv_module.h"

namespace tool {
namespace {

constexpr size_t kRoom = 8'000'000;  ///< bytes of JPEG that are kept while the frames go by
constexpr size_t kLeastForOne = 9'000, kMostForOne = 90'000;

}  // namespace

ReportPictures::ReportPictures(int expected_frames)
    : room_for_one_(
          std::clamp(kRoom / static_cast<size_t>(std::max(expected_frames, 1)), kLeastForOne, kMostForOne)) {}

void ReportPictures::add(std::span<const uint8_t> nv21, int width, int height, int stride) {
  const size_t index = places_.size();
  places_.emplace_back();
  if (nv21.empty() || width < 2 || height < 2 || index % every_ != 0) return;
  places_.back() = pictures_.size();
  pictures_.push_back(opencv().report_jpeg(nv21, width, height, stride, room_for_one_));
  bytes_ += pictures_.back().size();
  fit(kRoom);
}

void ReportPictures::fit(size_t bytes) {
  while (bytes_ > bytes && pictures_.size() > 1) thin_out();
}

/// A long run keeps every second picture, then every fourth, and so on.
void ReportPictures::thin_out() {
  every_ *= 2;
  std::vector<std::vector<uint8_t>> kept;
  bytes_ = 0;
  for (size_t frame = 0; frame < places_.size(); ++frame) {
    std::optional<size_t>& place = places_[frame];
    if (!place) continue;
    if (frame % every_ != 0) {
      place.reset();
      continue;
    }
    kept.push_back(std::move(pictures_[*place]));
    bytes_ += kept.back().size();
    place = kept.size() - 1;
  }
  pictures_ = std::move(kept);
}

}  // namespace tool
