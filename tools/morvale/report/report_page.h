/// report.html: a session to look at in a browser, in one file that needs nothing else.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "service/camera_service.h"
#include "service/record_difference.h"

namespace tool {

/// What the page says about where its frames come from.
struct ReportHead {
  std::string title;
  std::string command;  ///< the command line that made the page
  std::string source_kind, source_name, made_by;
  Camera camera = Camera::kFront;
  std::string engine;                  ///< what answered for the network
  std::optional<int> expected_frames;  ///< divides the page's room for pictures; unknown: 300
};

struct ReportFrame {
  int number = 0;    ///< in its source
  std::string name;  ///< a file of its own; empty: none
  const FrameReport& report;
  std::span<const uint8_t> nv21;  ///< the frame as the geometry says; empty: no picture
  StageTimes times;
  bool boxes_known = true;                      ///< a recording alone does not tell the front camera's boxes
  std::optional<double> seconds = {};           ///< the film's own time stamp
  std::span<const uint8_t> baseline_nv21 = {};  ///< the baseline's frame of the same geometry; empty: none
};

/// What the page compares with, frame by frame.
struct ReportBaseline {
  std::string name;
  std::vector<PersonWholeMeta> records;
  std::vector<std::vector<uint8_t>> label_maps;  ///< as FrameReport's; may be empty
  std::vector<std::vector<FaceRect>> camera_faces;
};

/// Gathers the frames and writes the page.
class ReportPage {
 public:
  /// Throws RunError in a program that was built without the page.
  explicit ReportPage(ReportHead head);
  ~ReportPage();
  ReportPage(const ReportPage&) = delete;
  ReportPage& operator=(const ReportPage&) = delete;

  void add(const ReportFrame& frame);
  void compare_with(const RecordComparison& comparison);
  void compare_with(const ReportBaseline& baseline);

  /// Throws UsageError for a folder that cannot be.
  static void make_folder(const std::filesystem::path& folder);

  /// Writes folder/report.html and makes the folder. Throws RunError, or UsageError for a folder that cannot
  /// be.
  void write(const std::filesystem::path& folder) const;

 private:
  struct Content;
  std::unique_ptr<Content> content_;
};

}  // namespace tool
