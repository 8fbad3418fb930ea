/// The shapes that a model file declares.
#include <stdexcept>

#include "fuzz/draws.h"
#include "runtime/onnx_signature.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  try {
    const auto signature =
        morvale::runtime::read_onnx_signature({reinterpret_cast<const char*>(data), size},
                                              "MobilenetV2/MobilenetV2/input:0", "logits/semantic/BiasAdd:0");
    for (const auto& shape : {signature.input, signature.output}) {
      HOLDS(!shape || shape->size() <= 8);
      for (const int32_t side : shape.value_or(morvale::runtime::Shape())) HOLDS(side >= -1);
    }
  } catch (const std::runtime_error&) {
  }
  return 0;
}
