/// Where a bundle's files go as they are made.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "session/frame_parts.h"

namespace morvale::session {

class Destination {
 public:
  virtual ~Destination() = default;
  /// The frame's files, then its record, then its line.
  virtual void add(const std::vector<NewPart>& parts, const PersonWholeMeta& record,
                   const std::string& line) = 0;
  /// Nothing may be added behind it.
  virtual void finish() = 0;
};

/// A file where the name ends in ".morvale", else a folder; `session` is the text of its session.json.
/// Everything throws BundleError or what the system's calls throw.
std::unique_ptr<Destination> new_destination(const std::filesystem::path& bundle, const std::string& session);

}  // namespace morvale::session
