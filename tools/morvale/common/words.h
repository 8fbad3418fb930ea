#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <vector>

namespace tool {

/// "1 frame", "2 frames"; `many` where an s does not do.
inline std::string counted(size_t count, const std::string& one, const std::string& many = "") {
  return std::to_string(count) + " " + (count == 1 ? one : many.empty() ? one + "s" : many);
}

/// "a.png, b.png and 7 more".
inline std::string name_list(const std::vector<std::string>& names) {
  constexpr size_t kShown = 5;
  const size_t shown = names.size() > kShown + 1 ? kShown : names.size();
  std::string text;
  for (size_t i = 0; i < shown; ++i) text += (i > 0 ? ", " : "") + names[i];
  return names.size() > shown ? text + " and " + std::to_string(names.size() - shown) + " more" : text;
}

}  // namespace tool
