#pragma once

#include <memory>
#include <string>

#include "service/faces.h"

namespace tool {

/// A face cascade plays the camera's detector. Throws UsageError when the file is none.
std::unique_ptr<FaceSource> make_cascade_faces(const std::string& file);

}  // namespace tool
