/// The helps are laid out by hand for a terminal. A manual page is laid out by its reader's; this finds the
/// parts that both have.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tool {

struct ManualPart {
  enum class Kind {
    kParagraph,    ///< lines that begin at the margin; to be filled
    kCode,         ///< a line set in by two to five blanks; kept as it is, less two blanks
    kTerm,         ///< the same with a gap inside: `term` and, behind the gap, what it means
    kExplanation,  ///< lines set in further, which explain the code above; to be filled
  };
  Kind kind;
  std::string text;
  std::string term = {};
  bool after_gap = false;  ///< an empty line stands above
};

std::vector<ManualPart> manual_parts(std::string_view help);

}  // namespace tool
