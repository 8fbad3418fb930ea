#include "pictures/opencv_module.h"

#include <opencv2/core/utility.hpp>
#include <opencv2/core/utils/logger.hpp>
#include <opencv2/imgcodecs.hpp>

#include "analyze/annotate.h"
#include "convert/blur_grid.h"
#include "pictures/frame_from_bgr.h"
#include "pictures/picture_decoder.h"
#include "pictures/picture_file.h"
#include "pictures/ssim.h"
#include "report/report_picture.h"
#include "service/cascade_faces.h"
#include "sources/frame_source.h"

namespace tool {
namespace {

bool is_picture(const std::string& path) { return cv::haveImageReader(path); }

Frame photograph_frame(const std::string& path, const FrameShape& shape) {
  return frame_from_bgr(path, shape.size ? decode_photograph(path, *shape.size) : decode_photograph(path),
                        shape.stride);
}

// OpenCV's own complaints would stand beside our one sentence.
[[maybe_unused]] const auto kSilence = cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);

}  // namespace
}  // namespace tool

/// What opencv() finds by this name.
extern "C" __attribute__((visibility("default"))) const tool::OpenCvModule morvale_opencv_module;
const tool::OpenCvModule morvale_opencv_module = {
    .version = cv::getVersionString,
    .is_picture = tool::is_picture,
    .photograph_frame = tool::photograph_frame,
    .make_cascade_faces = tool::make_cascade_faces,
    .make_pan_source = tool::make_pan_source,
    .annotated_png = tool::annotated_png,
    .frame_jpeg = tool::frame_jpeg,
    .score_png = tool::score_png,
    .read_picture = tool::read_picture,
    .check_target = tool::check_target,
    .write_picture = tool::write_picture,
    .structural_similarity = tool::structural_similarity,
    .blur_grid = tool::blur_grid,
};
