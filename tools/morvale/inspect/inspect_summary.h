/// What a recording holds, over all of its frames.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "inspect/inspect_source.h"
#include "session/json.h"

namespace tool {

/// The least and the greatest value of a figure.
struct ValueRange {
  int64_t least = 0, most = 0;
  bool empty = true;
  void add(int64_t value);
};

struct RecordSummary {
  int frames = 0;
  ValueRange human_ratio, ver;
  ValueRange faces;           ///< faces in a front camera's records
  int person_box_frames = 0;  ///< back camera's records with a person box
};
RecordSummary summary_of(const RecordSource& source, Camera camera_of_bare_records);

struct BundleSummary {
  std::vector<std::string> sizes;  ///< "640x480", "640x480, rows of 704 bytes", ... in order of appearance
  int failed = 0, gated = 0, without_network = 0;
  int with_pixels = 0, with_scores = 0, with_labels = 0;
  ValueRange camera_faces;
  std::vector<double> network_ms;  ///< ascending; of the runs that were timed
};
BundleSummary summary_of(const std::vector<morvale::session::FrameLine>& lines);

bool is_gated(const morvale::session::FrameLine& line);

/// The value that `percent` of the ascending values do not exceed. `values` is not empty.
double percentile(const std::vector<double>& values, int percent);

std::string summary_text(const RecordSource& source, Camera camera);
morvale::session::Json summary_json(const RecordSource& source, Camera camera);

}  // namespace tool
