/// The file of faces: at most five rectangles that have an area, or a refusal in words.
#include "common/command.h"
#include "fuzz/draws.h"
#include "fuzz/memory_file.h"
#include "pictures/opencv_module.h"
#include "service/faces.h"

/// The detector is another source of faces.
const tool::OpenCvModule& tool::opencv() { std::abort(); }

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const MemoryFile file(data, size);
  try {
    tool::Frame frame;
    frame.input = "folder/a.png";
    const auto faces = tool::make_face_source(file.path(), "", {"a.png", "b.png"})->faces(frame);
    HOLDS(faces.size() <= morvale::kMaxFaces);
    for (const FaceRect& face : faces) HOLDS(face.w >= 1 && face.h >= 1);
  } catch (const tool::UsageError&) {
  }
  return 0;
}
