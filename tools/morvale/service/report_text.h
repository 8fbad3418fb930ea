/// A frame's report as text.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "service/camera_service.h"
#include "session/json.h"

namespace tool {

constexpr int kGridColumns = morvale::kOccupancyColumns, kGridRows = morvale::kOccupancyRows;

/// The occupancy grid of a back camera's record: 15 rows of 19 characters, '1' where somebody is.
std::array<std::string, kGridRows> occupancy_grid(const PersonWholeMeta& record);

/// The person box of a back camera's record, which holds it as x, w, y, h.
FaceRect person_box(const PersonWholeMeta& record);

/// The resource hint of a back camera's record.
int32_t resource_hint(const PersonWholeMeta& record);

/// How many faces of the record are measured: on the front camera at most three, none on the back camera.
int measured_faces(const FrameReport& report);

morvale::session::Json json_of(const Geometry& geometry);

/// The report as a JSON object, and any JSON object as a line.
morvale::session::Json json_of(const std::string& name, int frame_index, const FrameReport& report);
std::string text_line(const morvale::session::Json& json);

/// One JSON object and a line end. It holds no time and no path but the input's name as given: the same
/// frames give the same bytes.
std::string json_line(const std::string& name, int frame_index, const FrameReport& report);

/// A readable table, printed as it grows: the lines of one frame after another, the first with the heading.
/// What an input's shape does to its results stands below its first frame.
class Table {
 public:
  explicit Table(const std::vector<std::string>& input_names);
  std::string lines(const std::string& name, int frame_index, const FrameReport& report);

 private:
  std::string heading_, noted_;
  size_t name_width_ = 5;
};

}  // namespace tool
