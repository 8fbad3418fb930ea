/// A video file as a source of frames, decoded by OpenCV.
#include <cstdlib>
#include <opencv2/videoio.hpp>

#include <morvale/morvale.h>
#include "common/command.h"
#include "pictures/photograph_frame.h"
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
    if (!video_.read(bgr)) return std::nullopt;
    SourceFrame frame;
    frame.number = next_++;
    frame.input = input_of(frame_from_bgr(file_, bgr));
    return frame;
  }

  bool skip() override {
    ++next_;
    return video_.grab();
  }

  std::optional<int> count() const override {
    const double frames = video_.get(cv::CAP_PROP_FRAME_COUNT);  // the container's word, an estimate at times
    if (frames < 1 || frames > 1e9) return std::nullopt;
    return static_cast<int>(frames);
  }

 private:
  std::string file_;
  cv::VideoCapture video_;
  int next_ = 0;
};

}  // namespace

std::unique_ptr<FrameSource> make_video_source(const std::string& file) {
  // FFmpeg's own complaints would stand beside our one sentence.
  setenv("OPENCV_FFMPEG_LOGLEVEL", "-8", /*overwrite=*/0);
  return std::make_unique<VideoSource>(file);
}

}  // namespace tool
