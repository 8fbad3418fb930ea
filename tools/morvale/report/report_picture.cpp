#include "report/report_picture.h"

#include <algorithm>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include <morvale/morvale.h>
#include "common/command.h"

namespace tool {

using morvale::kLabels;
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

std::vector<uint8_t> jpeg_within(const cv::Mat& picture, size_t room) {
  std::vector<uint8_t> jpeg;
  for (const Fineness& fineness : kFineness) {
    const double scale = std::min(1.0, double(fineness.longer_side) / std::max(picture.cols, picture.rows));
    cv::Mat shown = picture;
    const auto side = [&](int full) { return std::max(cvRound(full * scale), 1); };  // a strip keeps a pixel
    if (scale < 1) cv::resize(picture, shown, {side(picture.cols), side(picture.rows)}, 0, 0, cv::INTER_AREA);
    if (!cv::imencode(".jpg", shown, jpeg,
                      {cv::IMWRITE_JPEG_QUALITY, fineness.quality, cv::IMWRITE_JPEG_OPTIMIZE, 1,
                       cv::IMWRITE_JPEG_PROGRESSIVE, 1}))
      throw RunError("a picture of the report cannot be encoded.");
    if (jpeg.size() <= room) break;
  }
  return jpeg;
}

}  // namespace

std::vector<uint8_t> frame_jpeg(std::span<const uint8_t> nv21, const Geometry& geometry, size_t room) {
  if (nv21.empty() || geometry.width < 2 || geometry.height < 2) return {};
  return jpeg_within(seen_picture(nv21, geometry.width, geometry.height, geometry.stride), room);
}

std::vector<uint8_t> score_png(std::span<const uint8_t> label_map, const Geometry& geometry) {
  if (label_map.empty() || geometry.net_size < 1) return {};
  const int cells = static_cast<int>(label_map.size()) / kLabels, rows = cells / geometry.net_size;
  cv::Mat planes(rows * kLabels, geometry.net_size, CV_8UC1);
  for (int label = 0; label < kLabels; ++label)
    for (int cell = 0; cell < rows * geometry.net_size; ++cell)
      planes.data[label * rows * geometry.net_size + cell] = label_map[size_t(cell * kLabels + label)];
  std::vector<uint8_t> png;
  if (!cv::imencode(".png", planes, png, {cv::IMWRITE_PNG_COMPRESSION, 9}))
    throw RunError("a label map of the report cannot be encoded.");
  return png;
}

}  // namespace tool
