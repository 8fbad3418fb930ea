/// Where the camera's faces come from: on a device the camera's own detector reports them with every frame.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include <morvale/morvale.h>
#include "service/frame_input.h"

namespace tool {

/// Debian's opencv-data has it.
inline constexpr const char* kUsualCascade =
    "/usr/share/opencv4/haarcascades/haarcascade_frontalface_alt2.xml";

class FaceSource {
 public:
  virtual ~FaceSource() = default;
  /// The faces of a frame, at most morvale::kMaxFaces, largest or first-named first.
  virtual std::vector<FaceRect> faces(const Frame& frame) = 0;
};

/// mode "none": no faces. "auto": a face cascade plays the detector. Anything else: a JSON file that holds a
/// list of {"x", "y", "w", "h"} for every input, or an object that maps the base name of each of
/// `input_names` to such a list. Throws UsageError when the file or the cascade cannot be used.
std::unique_ptr<FaceSource> make_face_source(const std::string& mode, const std::string& cascade_file,
                                             const std::vector<std::string>& input_names);

}  // namespace tool
