/// index.html: a folder's reports or pictures at a glance. Plain HTML, which opens from disk as the reports
/// do.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace tool {

struct IndexEntry {
  std::string title;
  std::string link;                ///< inside the folder; empty: there is nothing to open
  std::string picture;             ///< inside the folder, or a data: address; empty: none
  bool good = true;                ///< else it is marked
  std::vector<std::string> facts;  ///< the first in bold
};

/// Writes folder/index.html. Throws RunError.
void write_index(const std::filesystem::path& folder, const std::string& heading,
                 const std::vector<IndexEntry>& entries);

/// What the index says of folder/name/report.html, from the data in it. Where there is no report, or none
/// that can be read, the title alone.
IndexEntry entry_of_report(const std::filesystem::path& folder, const std::string& name);

}  // namespace tool
