#include <cstdint>
#include <fstream>
#include <iterator>
#include <opencv2/core/utils/logger.hpp>
#include <opencv2/dnn.hpp>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include <morvale/core/export.h>
#include <morvale/core/globals.h>
#include "runtime/engine.h"
#include "runtime/onnx_signature.h"

namespace morvale::runtime {
namespace {

/// OpenCV reports a fault on standard error before it throws; the session's own line is to stand alone.
class QuietOpenCv {
 public:
  QuietOpenCv() : level_(cv::utils::logging::setLogLevel(cv::utils::logging::LOG_LEVEL_SILENT)) {}
  ~QuietOpenCv() { cv::utils::logging::setLogLevel(level_); }
  QuietOpenCv(const QuietOpenCv&) = delete;
  QuietOpenCv& operator=(const QuietOpenCv&) = delete;

 private:
  cv::utils::logging::LogLevel level_;
};

std::string to_text(const Shape& shape) {
  std::string text;
  for (const int32_t size : shape) {
    text += (text.empty() ? "" : "x") + (size < 0 ? "?" : std::to_string(size));
  }
  return text.empty() ? "nothing" : text;
}

Shape shape_of(const cv::Mat& values) { return {values.size.p, values.size.p + values.dims}; }

std::string read_file(const std::filesystem::path& path) {
  constexpr uintmax_t kMostBytes = 256 << 20;  // the workstation's network has 16 MB
  if (std::filesystem::file_size(path) > kMostBytes) throw std::runtime_error("it is larger than 256 MiB");
  std::ifstream file(path, std::ios::binary);
  std::string content(std::istreambuf_iterator<char>(file), {});
  if (!file || content.empty()) throw std::runtime_error("it cannot be read");
  return content;
}

const Shape& found(const std::optional<Shape>& shape, const std::string& name) {
  if (!shape) throw std::runtime_error("it has no tensor " + name);
  return *shape;
}

/// Whether the file's name tells another size than its model has, as "..._256_..." does: a model under the
/// other's name would fail on every frame.
bool misnamed(const std::filesystem::path& file, int32_t side) {
  const std::string name = file.filename().string();
  for (const int32_t other : {256, 128})
    if (other != side && name.find("_" + std::to_string(other) + "_") != std::string::npos) return true;
  return false;
}

/// The shape that the model declares for its input, if that and its output's are those of one of the
/// library's two models. Asked before the model is loaded: any other shape could take any amount of memory.
Shape fitting_input(const std::string& file, const std::string& input_name, const std::string& output_name) {
  const OnnxSignature model = read_onnx_signature(file, input_name, output_name);
  const Shape& in = found(model.input, input_name);
  const Shape& out = found(model.output, output_name);
  for (const int32_t side : {256, 128}) {
    if (in != Shape{1, side, side, 3}) continue;
    const Shape expected{1, side / 4, side / 4, kLabels};
    if (out == expected) return in;
    throw std::runtime_error("it gives " + to_text(out) + ", not " + to_text(expected));
  }
  throw std::runtime_error("it takes " + to_text(in) + ", not 1x256x256x3 or 1x128x128x3");
}

class OnnxEngine final : public Engine {
 public:
  void open(const std::filesystem::path& model, const std::string& input_name,
            const std::string& output_name) override {
    const QuietOpenCv quiet;
    const std::string file = read_file(model);
    input_shape_ = fitting_input(file, input_name, output_name);
    if (misnamed(model, input_shape_[1]))
      throw std::runtime_error("it takes " + to_text(input_shape_) + " and not what its name says");
    input_name_ = input_name;
    output_name_ = output_name;
    net_ = cv::dnn::readNetFromONNX(file.data(), file.size());
    probe();
  }

  vexa::DataBuffer run(const vexa::DataBuffer& input) override {
    if (input.data == nullptr) throw std::runtime_error("the input has no data");
    if (input.shape != input_shape_) {
      throw std::runtime_error("the input is " + to_text(input.shape) + ", not " + to_text(input_shape_));
    }
    scores_ = forward(cv::Mat(input_shape_, CV_32F, input.data));
    return {scores_.ptr(), shape_of(scores_)};
  }

 private:
  /// One run on zeros: proves that the graph keeps what the file declares, and leaves OpenCV's buffers in
  /// place.
  void probe() {
    const Shape expected{1, input_shape_[1] / 4, input_shape_[1] / 4, morvale::kLabels};
    const cv::Mat scores = forward(cv::Mat::zeros(4, input_shape_.data(), CV_32F));
    if (shape_of(scores) != expected || scores.type() != CV_32F) {
      throw std::runtime_error("it gave " + to_text(shape_of(scores)) + ", not " + to_text(expected));
    }
  }

  cv::Mat forward(const cv::Mat& input) {
    net_.setInput(input, input_name_);
    return net_.forward(output_name_);
  }

  cv::dnn::Net net_;
  std::string input_name_;
  std::string output_name_;
  Shape input_shape_;
  cv::Mat scores_;  ///< keeps the last run's output alive for the caller
};

}  // namespace

}  // namespace morvale::runtime

/// What make_onnx_engine() finds by this name.
extern "C" MORVALE_API morvale::runtime::Engine* vexa_make_onnx_engine() {
  return new morvale::runtime::OnnxEngine;
}
