/// A replayed frame as a line of text.
#pragma once

#include <optional>
#include <string>

#include "service/camera_service.h"

namespace tool {

struct LineExtras {
  std::string picture;              ///< the frame's own file; empty: none
  std::optional<StageTimes> times;  ///< absent: not wanted
  std::optional<double> seconds;    ///< the film's own time stamp; absent: it has none
};

/// One JSON object and a line end.
std::string replay_json_line(const std::string& source_name, int frame, const FrameReport& report,
                             const LineExtras& extras);

/// The names of the columns, and a frame's: what stands beside the record, then its 72 words.
std::string csv_heading(bool times);
/// RFC 4180, for names, which go to terminals too: a text with commas, quotes or line ends stands in quotes,
/// its quotes twice.
std::string csv_text(const std::string& name);
std::string csv_line(const std::string& source_name, int frame, const FrameReport& report,
                     const LineExtras& extras);

}  // namespace tool
