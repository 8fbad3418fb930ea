/// What `inspect` and `diff` read: a session bundle, or bare records.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "service/camera_service.h"
#include "session/bundle.h"
#include "session/metadata.h"

namespace tool {

struct RecordSource {
  std::string name;                      ///< as the caller gave it
  std::vector<PersonWholeMeta> records;  ///< one a frame

  /// Of a bundle only.
  std::unique_ptr<morvale::session::BundleReader> bundle;
  std::vector<morvale::session::FrameLine> lines;  ///< one a frame

  int frame_count() const { return static_cast<int>(records.size()); }

  /// Which camera a bundle tells of; bare records do not say.
  std::optional<Camera> camera() const;

  /// Which camera frame `index` came from; `otherwise` for bare records.
  Camera camera_at(int index, Camera otherwise) const;
};

/// Opens a folder as a session bundle; a file, or standard input for "-", as one 288-byte record after
/// another. Throws UsageError.
RecordSource open_records(const std::string& path);

}  // namespace tool
