#include "convert/blur_grid.h"

#include <opencv2/imgcodecs.hpp>

#include <morvale/imgproc/grid_blur.h>
#include "common/command.h"
#include "common/input_file.h"
#include "pictures/picture_decoder.h"

namespace tool {
namespace {

int cells(int pixels) { return (pixels + morvale::kBlurCell - 1) / morvale::kBlurCell; }

std::vector<uint8_t> from_picture(const std::string& file, FrameSize needed) {
  const cv::Mat marks = decode_photograph(file);
  if (marks.cols != needed.width || marks.rows != needed.height)
    throw UsageError("--grid: " + file + " has " + text_of({marks.cols, marks.rows}) +
                     " pixels but the picture has " + text_of(needed) + " cells; give one pixel for each.");
  std::vector<uint8_t> grid(static_cast<size_t>(needed.height) * morvale::kBlurGridColumns);
  for (int y = 0; y < needed.height; ++y) {
    for (int x = 0; x < needed.width; ++x) {
      const auto mark = marks.at<cv::Vec3b>(y, x);
      grid[static_cast<size_t>(y) * morvale::kBlurGridColumns + static_cast<size_t>(x)] =
          mark == cv::Vec3b() ? uint8_t{0} : uint8_t{1};
    }
  }
  return grid;
}

}  // namespace

std::vector<uint8_t> blur_grid(const std::string& file, FrameSize picture) {
  const FrameSize needed{cells(picture.width), cells(picture.height)};
  if (needed.width > morvale::kBlurGridColumns)
    throw UsageError(
        "a blurred picture may be " + std::to_string(morvale::kBlurGridColumns * morvale::kBlurCell) +
        " pixels wide but this one has " + std::to_string(picture.width) + "; give a smaller one.");
  const size_t bytes = static_cast<size_t>(needed.height) * morvale::kBlurGridColumns;
  if (file.empty()) return std::vector<uint8_t>(bytes, 1);
  check_readable(file);
  if (cv::haveImageReader(file)) return from_picture(file, needed);
  const std::optional<uint64_t> found = file_length(file);
  if (found != bytes)
    throw UsageError("--grid: " + file + " must be a picture or " + std::to_string(bytes) + " bytes, " +
                     std::to_string(morvale::kBlurGridColumns) + " for each row of cells, but has " +
                     (found ? std::to_string(*found) : "no length") + ".");
  return read_bytes(file, bytes);
}

}  // namespace tool
