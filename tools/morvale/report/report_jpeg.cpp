#include "report/report_jpeg.h"

#include <algorithm>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <morvale/morvale.h>
#include "common/command.h"

namespace tool {
namespace {

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

}  // namespace

std::vector<uint8_t> report_jpeg(std::span<const uint8_t> nv21, int width, int height, int stride,
                                 size_t room) {
  const cv::Mat picture = seen_picture(nv21, width, height, stride);
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

}  // namespace tool
