/// index.html of a comparison over many recordings.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "ab/ab_verdict.h"

namespace tool {

/// `links`: for a verdict's place in the list the page that compares its frames; empty: none. Throws
/// RunError.
void write_ab_page(const std::filesystem::path& folder, const std::vector<Verdict>& verdicts,
                   const std::vector<std::string>& links, const std::string& command);

}  // namespace tool
