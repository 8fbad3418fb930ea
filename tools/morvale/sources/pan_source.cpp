/// A camera that pans and zooms over one photograph.
#include <algorithm>
#include <cmath>
#include <numbers>
#include <opencv2/imgproc.hpp>

#include "pictures/frame_from_bgr.h"
#include "pictures/picture_decoder.h"
#include "sources/frame_source.h"

namespace tool {
namespace {

/// The camera sees at least this share of the photograph's width.
constexpr double kNearest = 0.62;

class PanSource final : public FrameSource {
 public:
  PanSource(const std::string& photograph, FrameSize size, int frames)
      : name_(photograph), size_(size), frames_(frames), picture_(decode_photograph(photograph)) {
    // The largest part of the photograph that has the frame's shape.
    const double scale = std::min(double(picture_.cols) / size.width, double(picture_.rows) / size.height);
    view_ = {size.width * scale, size.height * scale};
    // Shrunk by area first: sampling a far larger picture would flicker.
    const double shrink = kNearest * scale;
    if (shrink > 1) {
      cv::resize(picture_, picture_, {}, 1 / shrink, 1 / shrink, cv::INTER_AREA);
      view_ = {view_.width / shrink, view_.height / shrink};
    }
  }

  std::optional<SourceFrame> next() override {
    if (next_ >= frames_) return std::nullopt;
    SourceFrame frame;
    frame.number = next_;
    frame.input = input_of(frame_from_bgr(name_, look(next_)));
    ++next_;
    return frame;
  }

  bool skip() override {
    if (next_ >= frames_) return false;
    ++next_;
    return true;
  }

  std::optional<int> count() const override { return frames_; }

 private:
  /// One slow round: all of the picture, nearer while the view sways, and back.
  cv::Mat look(int index) const {
    const double turn = 2 * std::numbers::pi * index / frames_;
    const double zoom = 1 - (1 - kNearest) * (1 - std::cos(turn)) / 2;
    const cv::Size2d seen(view_.width * zoom, view_.height * zoom);
    const cv::Point2d room(picture_.cols - seen.width, picture_.rows - seen.height);
    const cv::Point2d corner(room.x * (0.5 + 0.45 * std::sin(turn)),
                             room.y * (0.15 + 0.15 * std::sin(2 * turn)));  // heads are in the upper part
    const double step_x = seen.width / size_.width, step_y = seen.height / size_.height;
    const cv::Matx23d frame_to_picture(step_x, 0, corner.x + step_x / 2 - 0.5, 0, step_y,
                                       corner.y + step_y / 2 - 0.5);
    cv::Mat frame;
    cv::warpAffine(picture_, frame, frame_to_picture, {size_.width, size_.height},
                   cv::INTER_LINEAR | cv::WARP_INVERSE_MAP, cv::BORDER_REPLICATE);
    return frame;
  }

  std::string name_;
  FrameSize size_;
  int frames_, next_ = 0;
  cv::Mat picture_;
  cv::Size2d view_;
};

}  // namespace

std::unique_ptr<FrameSource> make_pan_source(const std::string& photograph, FrameSize size, int frames) {
  return std::make_unique<PanSource>(photograph, size, frames);
}

}  // namespace tool
