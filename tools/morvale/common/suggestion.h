#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tool {

/// The candidate that a mistyped `word` most likely means: one that it begins, or that a few slips (a letter
/// wrong, missing, too many, or two swapped) turn into it. Nothing when none is near.
std::optional<std::string> nearest(std::string_view word, const std::vector<std::string>& candidates);

/// "; did you mean --camera?", or nothing when no candidate is near.
std::string did_you_mean(std::string_view word, const std::vector<std::string>& candidates);

}  // namespace tool
