/// Writes the macros of a manual page.
#pragma once

#include <initializer_list>
#include <string>
#include <string_view>

namespace tool {

/// `text` as roff prints it letter by letter, wherever it stands in a line.
std::string roff_text(std::string_view text);

class Roff {
 public:
  Roff(std::string_view name, std::string_view version, std::string_view title);

  void section(std::string_view title);
  void subsection(std::string_view title);
  /// A line that is already as roff prints it.
  void text(std::string_view ready);
  void paragraph(std::string_view text);
  /// A bold line that a paragraph explains; both already as roff prints them.
  void item(std::string_view tag, std::string_view text);
  void synopsis(std::initializer_list<std::string_view> usages);
  /// A bold line as it is, broken where a shell lets it be; `apart` puts a gap above.
  void code(std::string_view line, bool apart);
  /// A paragraph under a line of code.
  void explanation(std::string_view text);

  const std::string& page() const { return page_; }

 private:
  void line(std::string_view text) { page_.append(text).append("\n"); }

  std::string page_;
};

}  // namespace tool
