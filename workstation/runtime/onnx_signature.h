/// What an ONNX file declares about the tensors that go in and out. OpenCV's reader drops these shapes, so
/// they are read from the file itself, and before that reader sees the file: what a model asks for in memory
/// follows from them.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

namespace morvale::runtime {

using Shape = std::vector<int32_t>;  ///< -1 where the file leaves a size open

struct OnnxSignature {
  std::optional<Shape> input, output;  ///< absent: the graph declares no such tensor
};

/// The shapes of one input and one output, by their names. Throws std::runtime_error when `file`, the whole
/// content of the file, is not an ONNX model.
OnnxSignature read_onnx_signature(std::string_view file, std::string_view input_name,
                                  std::string_view output_name);

}  // namespace morvale::runtime
