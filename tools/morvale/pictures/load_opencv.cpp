#include <dlfcn.h>

#include "common/command.h"
#include "pictures/opencv_module.h"

namespace tool {
namespace {

const OpenCvModule& load() {
  // Found beside the program as built, in the folder of libraries as installed: the program's own search
  // path.
  constexpr const char* kModule = "libmorvale_pictures.so";
  void* const library = dlopen(kModule, RTLD_NOW | RTLD_LOCAL);
  void* const table = library == nullptr ? nullptr : dlsym(library, "morvale_opencv_module");
  if (table == nullptr)
    throw RunError(std::string(kModule) + " cannot be loaded: " + dlerror() +
                   "; it belongs to this program and needs OpenCV.");
  return *static_cast<const OpenCvModule*>(table);
}

}  // namespace

const OpenCvModule& opencv() {
  static const OpenCvModule& module = load();
  return module;
}

}  // namespace tool
