#include "sources/frame_source.h"

#include <filesystem>

#include "common/command.h"
#include "pictures/opencv_module.h"
#include "session/parts.h"

namespace tool {

const char* name_of(SourceKind kind) {
  switch (kind) {
    case SourceKind::kBundle:
      return "bundle";
    case SourceKind::kVideo:
      return "video";
    case SourceKind::kY4m:
      return "y4m";
    case SourceKind::kPictures:
      return "pictures";
    case SourceKind::kPan:
      return "pan";
  }
  return "";
}

SourceKind kind_of_input(const std::string& input) {
  namespace fs = std::filesystem;
  const fs::path path(input);
  std::error_code error;
  if (input == "-" || path.extension() == ".y4m") return SourceKind::kY4m;
  if (!fs::exists(path, error))
    throw UsageError(input + ": there is no such file or folder; check the name.");
  if (fs::is_directory(path, error))
    return fs::exists(path / "session.json", error) ? SourceKind::kBundle : SourceKind::kPictures;
  if (path.extension() == morvale::session::kPackedExtension) return SourceKind::kBundle;
  const bool picture = path.extension() == ".nv21" || opencv().is_picture(input);
  return picture ? SourceKind::kPictures : SourceKind::kVideo;
}

}  // namespace tool
