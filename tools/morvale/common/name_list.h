#pragma once

#include <algorithm>
#include <string>
#include <vector>

namespace tool {

/// "a.png, b.png and 7 more".
inline std::string name_list(const std::vector<std::string>& names) {
  constexpr size_t kShown = 5;
  const size_t shown = names.size() > kShown + 1 ? kShown : names.size();
  std::string text;
  for (size_t i = 0; i < shown; ++i) text += (i > 0 ? ", " : "") + names[i];
  return names.size() > shown ? text + " and " + std::to_string(names.size() - shown) + " more" : text;
}

}  // namespace tool
