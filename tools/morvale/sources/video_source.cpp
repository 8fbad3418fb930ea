/// A video file as a source of frames, decoded by OpenCV.
#include <algorithm>
#include <cstdlib>
#include <opencv2/core/utils/logger.hpp>
#include <opencv2/videoio.hpp>

#include <morvale/morvale.h>
#include "common/command.h"
#include "pictures/frame_from_bgr.h"
#include "pictures/opencv_module.h"
#include "sources/decode_errors.h"
#include "sources/frame_source.h"

namespace tool {
namespace {

class VideoSource final : public FrameSource {
 public:
  explicit VideoSource(const std::string& file) : file_(file), video_(file, cv::CAP_FFMPEG) {
    if (!video_.isOpened())
      throw UsageError(file + ": neither a picture nor a video that can be read; try ffmpeg -i " + file +
                       " -f yuv4mpegpipe - | morvale replay -");
  }

  std::optional<SourceFrame> next() override {
    cv::Mat bgr;
    errors_.next_frame();
    if (!video_.read(bgr)) return std::nullopt;
    SourceFrame frame;
    frame.number = next_++;
    frame.seconds = std::max(video_.get(cv::CAP_PROP_POS_MSEC), 0.0) / 1000;  // of the frame just read
    frame.input = input_of(frame_from_bgr(file_, bgr));
    return frame;
  }

  bool skip() override {
    ++next_;
    errors_.next_frame();
    return video_.grab();
  }

  int damaged_frames() const override { return errors_.damaged_frames(); }

  std::optional<int> count() const override {
    const double frames = video_.get(cv::CAP_PROP_FRAME_COUNT);  // the container's word, an estimate at times
    if (frames < 1 || frames > 1e9) return std::nullopt;
    return static_cast<int>(frames);
  }

 private:
  std::string file_;
  cv::VideoCapture video_;
  DecodeErrors errors_;  ///< behind the video, whose opening sets up the log
  int next_ = 0;
};

std::unique_ptr<FrameSource> make_video_source(const std::string& file) {
  // OpenCV's and FFmpeg's own complaints would stand beside our one sentence.
  cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT);
  setenv("OPENCV_FFMPEG_LOGLEVEL", "-8", /*overwrite=*/0);
  return std::make_unique<VideoSource>(file);
}

}  // namespace
}  // namespace tool

/// What open_video() finds by this name.
extern "C" __attribute__((visibility("default"))) const tool::MakeVideoSource morvale_make_video_source;
const tool::MakeVideoSource morvale_make_video_source = tool::make_video_source;
