#pragma once

#include <string>
#include <string_view>

namespace morvale::session {

/// A text from a file or a file's name as a terminal may show it, on one line: control characters, which
/// could do anything to the terminal, and bytes that are not UTF-8 stand there as "\x1b".
std::string printable(std::string_view text);

}  // namespace morvale::session
