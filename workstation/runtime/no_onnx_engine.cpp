#include <stdexcept>

#include "runtime/engine.h"

namespace morvale::runtime {

std::unique_ptr<Engine> make_onnx_engine() {
  throw std::runtime_error("this build runs no models: set VEXA_ENGINE to \"recorded\" or \"fixed\"");
}

}  // namespace morvale::runtime
