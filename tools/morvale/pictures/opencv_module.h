/// Everything that needs OpenCV. With the libraries behind it OpenCV takes longer to load than most commands
/// take to run, so it stands in libmorvale_pictures.so, which the first call of opencv() loads, and what
/// reads videos, with FFmpeg and a hundred more libraries, in libmorvale_video.so.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "pictures/picture.h"

namespace tool {

class FaceSource;
class FrameSource;
struct Frame;
struct FrameReport;
struct Geometry;

/// Each function stands in the header named beside it. They throw what these headers say.
struct OpenCvModule {
  std::string (*version)();
  bool (*is_picture)(const std::string& path);  ///< by what stands in the file

  /// As the camera's, resized when `shape` names a size. Throws UsageError.
  Frame (*photograph_frame)(const std::string& path, const FrameShape& shape);
  std::unique_ptr<FaceSource> (*make_cascade_faces)(const std::string& file);  // service/cascade_faces.h
  std::unique_ptr<FrameSource> (*make_pan_source)(const std::string& photograph, FrameSize size,
                                                  int frames);  // sources/frame_source.h

  std::vector<uint8_t> (*annotated_png)(const Frame& frame, int frame_index,
                                        const FrameReport& report);  // analyze/annotate.h
  std::vector<uint8_t> (*frame_jpeg)(std::span<const uint8_t> nv21, const Geometry& geometry,
                                     size_t room);  // report/report_picture.h
  std::vector<uint8_t> (*score_png)(std::span<const uint8_t> label_map, const Geometry& geometry);

  Picture (*read_picture)(const std::string& path, std::optional<FrameSize> size,
                          std::optional<Layout> wanted);  // pictures/picture_file.h
  void (*check_target)(const std::string& path, Layout layout);
  void (*write_picture)(const std::string& path, const Picture& picture);
  double (*structural_similarity)(const Plane& a, const Plane& b);                // pictures/ssim.h
  std::vector<uint8_t> (*blur_grid)(const std::string& file, FrameSize picture);  // convert/blur_grid.h
};

/// Throws RunError when the module cannot be loaded.
const OpenCvModule& opencv();

/// What libmorvale_video.so shows.
using MakeVideoSource = std::unique_ptr<FrameSource> (*)(const std::string& file);
/// Throws RunError when the module cannot be loaded, UsageError when the file is no video.
std::unique_ptr<FrameSource> open_video(const std::string& file);

}  // namespace tool
