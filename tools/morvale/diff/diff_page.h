/// report.html of two recordings: baseline, current and difference side by side.
#pragma once

#include <filesystem>
#include <string>

#include "inspect/inspect_source.h"

namespace tool {

/// Shows the frames of `b`, the current side, against those of `a`. Pictures and geometry are b's, else a's;
/// bare records have neither. Throws UsageError, RunError, BundleError.
void write_diff_page(const RecordSource& a, const RecordSource& b, Camera camera_of_bare_records,
                     const std::string& command, const std::filesystem::path& folder);

}  // namespace tool
