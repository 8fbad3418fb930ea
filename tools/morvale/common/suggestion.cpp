#include "common/suggestion.h"

#include <algorithm>

namespace tool {
namespace {

/// How many slips are between the two words.
size_t slips(std::string_view a, std::string_view b) {
  std::vector<std::vector<size_t>> to(a.size() + 1, std::vector<size_t>(b.size() + 1));
  for (size_t i = 0; i <= a.size(); ++i) {
    for (size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        to[i][j] = i + j;
        continue;
      }
      const size_t wrong = to[i - 1][j - 1] + (a[i - 1] != b[j - 1]);
      to[i][j] = std::min({to[i - 1][j] + 1, to[i][j - 1] + 1, wrong});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        to[i][j] = std::min(to[i][j], to[i - 2][j - 2] + 1);
    }
  }
  return to[a.size()][b.size()];
}

}  // namespace

std::optional<std::string> nearest(std::string_view word, const std::vector<std::string>& candidates) {
  constexpr size_t kLongestWord = 64, kLeastBeginning = 3;
  if (word.size() > kLongestWord) return std::nullopt;
  const size_t letters = word.substr(std::min(word.find_first_not_of('-'), word.size())).size();
  std::optional<std::string> best;
  size_t least = letters / 5 + 2;  // less than this: one slip in a short word, more in a long one
  for (const std::string& candidate : candidates) {
    const bool begun = letters >= kLeastBeginning && candidate.starts_with(word);
    const size_t count = begun ? 1 : slips(word, candidate);
    if (count >= std::min(least, letters)) continue;
    least = count;
    best = candidate;
  }
  return best;
}

std::string did_you_mean(std::string_view word, const std::vector<std::string>& candidates) {
  const std::optional<std::string> meant = nearest(word, candidates);
  return meant ? "; did you mean " + *meant + "?" : "";
}

}  // namespace tool
