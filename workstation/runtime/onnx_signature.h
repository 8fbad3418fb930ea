/// What an ONNX file declares about the tensors that go in and out. OpenCV's reader drops these shapes, so
/// they are read from the file itself.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace morvale::runtime {

struct TensorSignature {
  std::string name;
  std::vector<int32_t> shape;  ///< -1 where the file leaves a size open
};

struct OnnxSignature {
  std::vector<TensorSignature> inputs;
  std::vector<TensorSignature> outputs;
};

/// Throws std::runtime_error when `file`, the whole content of the file, is not an ONNX model.
OnnxSignature read_onnx_signature(std::string_view file);

}  // namespace morvale::runtime
