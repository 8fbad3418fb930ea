/// When a label wins a cell.
#pragma once

namespace morvale {

/// A label wins by strictly beating every rival; a tie is no win.
template <class... Rivals>
constexpr bool wins(int score, Rivals... rivals) {
  return (... && (score > rivals));
}

}  // namespace morvale
