#include "session/printable.h"

#include <algorithm>
#include <cstddef>

namespace morvale::session {
namespace {

/// The bytes of the character that `text` begins with; 0 for a control character or what is not UTF-8.
size_t shown_bytes(std::string_view text) {
  const auto byte = [&](size_t at) { return at < text.size() ? static_cast<unsigned char>(text[at]) : 0u; };
  const unsigned first = byte(0);
  if (first < 0x80) return first >= 0x20 && first != 0x7f ? 1 : 0;
  const size_t length = first >= 0xf0 && first < 0xf5   ? 4
                        : first >= 0xe0 && first < 0xf0 ? 3
                        : first >= 0xc2 && first < 0xe0 ? 2
                                                        : 0;
  for (size_t at = 1; at < length; ++at)
    if (byte(at) < 0x80 || byte(at) > 0xbf) return 0;
  const bool second_controls = first == 0xc2 && byte(1) < 0xa0;  // U+0080 to U+009F
  return second_controls ? 0 : length;
}

}  // namespace

std::string printable(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const size_t bytes = shown_bytes(text);
    if (bytes > 0) {
      shown += text.substr(0, bytes);
    } else {
      const auto byte = static_cast<unsigned char>(text.front());
      shown += "\\x";
      shown += "0123456789abcdef"[byte >> 4];
      shown += "0123456789abcdef"[byte & 15];
    }
    text.remove_prefix(std::max<size_t>(bytes, 1));
  }
  return shown;
}

}  // namespace morvale::session
