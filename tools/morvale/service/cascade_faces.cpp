#include "service/cascade_faces.h"

#include <algorithm>
#include <filesystem>
#include <opencv2/imgproc.hpp>
#include <opencv2/objdetect.hpp>
#include <tuple>

#include "common/command.h"

namespace tool {
namespace {

class CascadeFaces : public FaceSource {
 public:
  explicit CascadeFaces(const std::string& file) {
    bool loaded = false;
    try {
      loaded = std::filesystem::is_regular_file(file) && cascade_.load(file);
    } catch (const cv::Exception&) {
      // Not a cascade: reported below.
    }
    if (!loaded)
      throw UsageError("the face cascade " + file +
                       " cannot be read; install opencv-data, or pass --cascade FILE or --faces none.");
  }

  std::vector<FaceRect> faces(const Frame& frame) override {
    const cv::Mat luma(frame.height, frame.width, CV_8UC1, const_cast<uint8_t*>(frame.luma()),
                       static_cast<size_t>(frame.stride));
    // The work grows with the pixels, and a face that fills a camera's picture needs few of them.
    constexpr double kLongestSide = 800;
    const double shrunk = std::max(1.0, std::max(frame.width, frame.height) / kLongestSide);
    cv::Mat small = luma, even;
    if (shrunk > 1) cv::resize(luma, small, {}, 1 / shrunk, 1 / shrunk, cv::INTER_AREA);
    cv::equalizeHist(small, even);
    std::vector<cv::Rect> found;
    cascade_.detectMultiScale(even, found, 1.1, 4, 0, {24, 24});
    const cv::Rect whole(0, 0, frame.width, frame.height);
    for (cv::Rect& box : found)
      box = whole & cv::Rect{cvRound(box.x * shrunk), cvRound(box.y * shrunk), cvRound(box.width * shrunk),
                             cvRound(box.height * shrunk)};
    // The detector's threads may deliver in any order; the position settles equal areas.
    std::sort(found.begin(), found.end(), [](const cv::Rect& a, const cv::Rect& b) {
      return std::tuple(-a.area(), a.y, a.x) < std::tuple(-b.area(), b.y, b.x);
    });
    found.resize(std::min(found.size(), size_t{morvale::kMaxFaces}));
    std::vector<FaceRect> faces;
    for (const cv::Rect& box : found) faces.push_back({box.x, box.y, box.width, box.height});
    return faces;
  }

 private:
  cv::CascadeClassifier cascade_;
};

}  // namespace

std::unique_ptr<FaceSource> make_cascade_faces(const std::string& file) {
  return std::make_unique<CascadeFaces>(file);
}

}  // namespace tool
