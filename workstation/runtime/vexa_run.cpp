/// Runs one model of the workstation's runtime on one picture, for checks of the network itself.
///   vexa_run MODEL SIDE PICTURE INPUT OUTPUT
/// MODEL is a file name in the folder that VEXA_MODEL_DIR names. The picture is shrunk to SIDE x SIDE RGB;
/// the values that the model got and those that it gave are written as raw float32 to INPUT and OUTPUT.
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <memory>
#include <opencv2/imgcodecs.hpp>
#include <opencv2/imgproc.hpp>
#include <stdexcept>
#include <string>
#include <vector>

#include <morvale/core/vexa_runtime.h>

namespace {

cv::Mat read_input(const std::string& picture, int side) {
  const cv::Mat bgr = cv::imread(picture, cv::IMREAD_COLOR);
  if (bgr.empty() || side < 4) throw std::runtime_error("cannot read the picture " + picture);
  cv::Mat rgb;
  cv::resize(bgr, rgb, {side, side}, 0, 0, cv::INTER_AREA);
  cv::cvtColor(rgb, rgb, cv::COLOR_BGR2RGB);
  cv::Mat values;
  rgb.convertTo(values, CV_32F, 1 / 127.5, -1);
  return values;
}

void write_floats(const std::string& path, const void* data, size_t count) {
  std::ofstream file(path, std::ios::binary);
  file.write(static_cast<const char*>(data), static_cast<std::streamsize>(count * sizeof(float)));
  if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

void run(const std::string& model, cv::Mat input, const std::string& input_path,
         const std::string& output_path) {
  const std::unique_ptr<vexa::VexaSession, decltype(&DestroyVexaSession)> session(CreateVexaSession(),
                                                                                  DestroyVexaSession);
  vexa::VexaOptionsV2 options;
  options.inputNames = {"MobilenetV2/MobilenetV2/input:0"};
  options.outputNames = {"logits/semantic/BiasAdd:0"};
  options.modelPath = model;
  std::vector<vexa::DataBuffer> inputs{{input.data, {1, input.rows, input.cols, 3}, 0, 1}};
  std::vector<vexa::DataBuffer> outputs;
  if (session->open(options) != 0 || session->execute(inputs, outputs) != 0) {
    throw std::runtime_error("the model did not run");
  }
  size_t count = 1;
  for (const int32_t size : outputs[0].shape) count *= static_cast<size_t>(size);
  write_floats(input_path, input.data, input.total() * 3);
  write_floats(output_path, outputs[0].data, count);
  session->close();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 6) {
    std::cerr << "usage: vexa_run MODEL SIDE PICTURE INPUT OUTPUT\n";
    return 2;
  }
  try {
    run(argv[1], read_input(argv[3], std::stoi(argv[2])), argv[4], argv[5]);
  } catch (const std::exception& error) {
    std::cerr << "vexa_run: " << error.what() << '\n';
    return 1;
  }
}
