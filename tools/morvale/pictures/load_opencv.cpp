#include <dlfcn.h>

#include "common/command.h"
#include "pictures/opencv_module.h"
#include "sources/frame_source.h"

namespace tool {
namespace {

/// What a module shows by this name. It is found beside the program as built, in the folder of libraries as
/// installed: the program's own search path.
template <class Shown>
const Shown& load(const char* module, const char* name) {
  void* const library = dlopen(module, RTLD_NOW | RTLD_LOCAL);
  void* const shown = library == nullptr ? nullptr : dlsym(library, name);
  if (shown == nullptr)
    throw RunError(std::string(module) + " cannot be loaded: " + dlerror() +
                   "; it belongs to this program and needs OpenCV.");
  return *static_cast<const Shown*>(shown);
}

}  // namespace

const OpenCvModule& opencv() {
  static const auto& module = load<OpenCvModule>("libmorvale_pictures.so", "morvale_opencv_module");
  return module;
}

std::unique_ptr<FrameSource> open_video(const std::string& file) {
  static const auto& make = load<MakeVideoSource>("libmorvale_video.so", "morvale_make_video_source");
  return make(file);
}

}  // namespace tool
