#include "report/report_picture.h"

#include <algorithm>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <morvale/morvale.h>
#include "common/command.h"

namespace tool {
namespace {

constexpr size_t kRoom = 8'000'000;  ///< bytes of JPEG that are kept while the frames go by
constexpr size_t kLeastForOne = 9'000, kMostForOne = 90'000;

/// From the finest down; the last is taken whatever it needs.
struct Fineness {
  int longer_side, quality;
};
constexpr Fineness kFineness[] = {{720, 84}, {640, 80}, {640, 68}, {512, 68},
                                  {448, 58}, {384, 50}, {320, 40}};

cv::Mat seen_picture(std::span<const uint8_t> nv21, int width, int height, int stride) {
  cv::Mat rgb(height, width, CV_8UC3), bgr;
  const size_t chroma = static_cast<size_t>(height) * static_cast<size_t>(stride);
  NV21toRGB(nv21.data(), nv21.data() + chroma, rgb.data, width, height);
  cv::cvtColor(rgb, bgr, cv::COLOR_RGB2BGR);
  return bgr;
}

std::vector<uint8_t> jpeg_within(const cv::Mat& picture, size_t room) {
  std::vector<uint8_t> jpeg;
  for (const Fineness& fineness : kFineness) {
    const double scale = std::min(1.0, double(fineness.longer_side) / std::max(picture.cols, picture.rows));
    cv::Mat shown = picture;
    const auto side = [&](int full) { return std::max(cvRound(full * scale), 1); };  // a strip keeps a pixel
    if (scale < 1) cv::resize(picture, shown, {side(picture.cols), side(picture.rows)}, 0, 0, cv::INTER_AREA);
    if (!cv::imencode(".jpg", shown, jpeg, {cv::IMWRITE_JPEG_QUALITY, fineness.quality}))
      throw RunError("a picture of the report cannot be encoded.");
    if (jpeg.size() <= room) break;
  }
  return jpeg;
}

}  // namespace

ReportPictures::ReportPictures(int expected_frames)
    : room_for_one_(
          std::clamp(kRoom / static_cast<size_t>(std::max(expected_frames, 1)), kLeastForOne, kMostForOne)) {}

void ReportPictures::add(std::span<const uint8_t> nv21, int width, int height, int stride) {
  const size_t index = places_.size();
  places_.emplace_back();
  if (nv21.empty() || width < 2 || height < 2 || index % every_ != 0) return;
  places_.back() = pictures_.size();
  pictures_.push_back(jpeg_within(seen_picture(nv21, width, height, stride), room_for_one_));
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
