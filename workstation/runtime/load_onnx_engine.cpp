#include <dlfcn.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include "runtime/engine.h"

namespace morvale::runtime {
namespace {

/// In the folder of this library. Not left to the search path: where a sanitizer stands between, the loader
/// does not know whose path to search.
std::string module_path() {
  Dl_info self{};
  const std::string name = "libvexa_onnx.so";
  return dladdr(reinterpret_cast<void*>(module_path), &self) == 0
             ? name
             : std::filesystem::path(self.dli_fname).replace_filename(name).string();
}

}  // namespace

std::unique_ptr<Engine> make_onnx_engine() {
  void* const library = dlopen(module_path().c_str(), RTLD_NOW | RTLD_LOCAL);
  void* const maker = library == nullptr ? nullptr : dlsym(library, "vexa_make_onnx_engine");
  if (maker == nullptr)
    throw std::runtime_error(std::string("no models can be run here (") + dlerror() +
                             "): set VEXA_ENGINE to \"recorded\" or \"fixed\"");
  return std::unique_ptr<Engine>(reinterpret_cast<Engine* (*)()>(maker)());
}

}  // namespace morvale::runtime
