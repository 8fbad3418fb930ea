#include "pictures/picture_decoder.h"

#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>

#include "common/command.h"
#include "common/diverted_output.h"

namespace tool {
namespace {

/// Decodes a picture; what the decoder writes on standard error goes into `complaints`.
cv::Mat decode(const std::string& path, std::string& complaints) {
  const int file = memfd_create("complaints", MFD_CLOEXEC);
  cv::Mat bgr;
  {
    const DivertedOutput diverted(STDERR_FILENO, file);
    try {
      bgr = cv::imread(path, cv::IMREAD_COLOR);
    } catch (const cv::Exception&) {
      // An oversized or damaged picture: stays empty like any other that does not decode.
    }
  }
  if (file < 0) return bgr;
  complaints.resize(4096);
  complaints.resize(
      static_cast<size_t>(std::max(pread(file, complaints.data(), complaints.size(), 0), ssize_t{0})));
  close(file);
  return bgr;
}

}  // namespace

cv::Mat decode_photograph(const std::string& path) {
  std::string complaints;
  cv::Mat bgr = decode(path, complaints);
  // A cut-off JPEG comes back as a whole picture with a grey rest; only the decoder's words tell.
  if (bgr.empty() || complaints.find("remature end") != std::string::npos)
    throw UsageError(path + ": the picture cannot be decoded; check that the file is whole.");
  return bgr;
}

cv::Mat decode_photograph(const std::string& path, FrameSize size) {
  cv::Mat bgr = decode_photograph(path);
  cv::resize(bgr, bgr, {size.width, size.height}, 0, 0, cv::INTER_AREA);
  return bgr;
}

}  // namespace tool
