#include "manual/roff.h"

#include <cstdio>
#include <vector>

namespace tool {
namespace {

/// A terminal of 80 columns has so many for code, behind the margins.
constexpr size_t kCodeColumns = 68;

/// What a roff formatter would take for a command, or print as another letter than the keyboard has.
std::string_view name_of(char c) {
  switch (c) {
    case '\\':
      return "\\e";
    case '-':
      return "\\-";
    case '\'':
      return "\\(aq";
    case '`':
      return "\\(ga";
    case '^':
      return "\\(ha";
    case '~':
      return "\\(ti";
    case '"':
      return "\\(dq";
    default:
      return {};
  }
}

/// Reads one letter of UTF-8 behind its first byte; malformed bytes end it.
char32_t take_letter(std::string_view& text) {
  const auto first = static_cast<unsigned char>(text[0]);
  const int more = first >= 0xF0 ? 3 : first >= 0xE0 ? 2 : first >= 0xC0 ? 1 : 0;
  char32_t letter = more == 0 ? first : first & (0x3Fu >> more);
  text.remove_prefix(1);
  for (int i = 0; i < more && !text.empty() && (text[0] & 0xC0) == 0x80; ++i) {
    letter = letter << 6 | (static_cast<unsigned char>(text[0]) & 0x3Fu);
    text.remove_prefix(1);
  }
  return letter;
}

std::string escaped(char32_t letter) {
  if (letter < 0x80) {
    const char c = static_cast<char>(letter);
    return name_of(c).empty() ? std::string(1, c) : std::string(name_of(c));
  }
  char name[16];
  std::snprintf(name, sizeof name, "\\[u%04X]", static_cast<unsigned>(letter));
  return name;
}

/// Whether a shell takes a backslash and a new line for the blank at `at`: outside of quotes. A flag stays
/// with its value.
bool breakable(std::string_view line, size_t at) {
  char quote = 0;
  for (const char c : line.substr(0, at))
    if (c == '\'' || c == '"') quote = quote == 0 ? c : quote == c ? '\0' : quote;
  const size_t word = line.rfind(' ', at - 1) + 1;
  return quote == 0 && line[word] != '-';
}

/// JSON and the like cannot be broken; commands begin with a letter, a variable or a path.
bool is_command(std::string_view line) { return line.find_first_of("{[") != line.find_first_not_of(' '); }

/// Where to break a line so that `columns` suffice for its beginning, best behind a pipe; 0: nowhere.
size_t break_before(std::string_view line, size_t columns) {
  const size_t begin = line.find_first_not_of(' '), pipe = line.rfind(" | ", columns - 2);
  if (pipe != std::string_view::npos && breakable(line, pipe + 2)) return pipe + 2;
  for (size_t at = columns; at > begin; --at)
    if (line[at] == ' ' && breakable(line, at)) return at;
  return 0;
}

std::vector<std::string> code_lines(std::string_view line) {
  constexpr std::string_view kIndent = "  ", kMark = " \\";
  std::vector<std::string> lines;
  std::string indent;
  while (is_command(line) && indent.size() + line.size() > kCodeColumns) {
    const size_t at = break_before(line, kCodeColumns - indent.size() - kMark.size());
    if (at == 0) break;
    lines.push_back(indent + std::string(line.substr(0, at)) + std::string(kMark));
    line.remove_prefix(at + 1);
    indent = kIndent;
  }
  lines.push_back(indent + std::string(line));
  return lines;
}

}  // namespace

std::string roff_text(std::string_view text) {
  // A dot or an apostrophe in the first column would be a command. The mark prints nothing.
  std::string result = !text.empty() && (text[0] == '.' || text[0] == '\'') ? "\\&" : "";
  while (!text.empty()) result += escaped(take_letter(text));
  return result;
}

Roff::Roff(std::string_view name, std::string_view version, std::string_view title) {
  // No date: the page must be the same whenever it is made. No hyphenation and no stretched lines: both would
  // reach into the commands that stand in the text.
  line(".TH " + std::string(name) + " 1 \"\" \"" + roff_text(version) + "\" \"" + roff_text(title) + "\"");
  line(".nh");
  line(".ad l");
}

void Roff::section(std::string_view title) { line(".SH \"" + roff_text(title) + "\""); }
void Roff::subsection(std::string_view title) { line(".SS \"" + roff_text(title) + "\""); }

void Roff::text(std::string_view ready) { line(ready); }

void Roff::paragraph(std::string_view text) {
  line(".PP");
  line(roff_text(text));
}

void Roff::item(std::string_view tag, std::string_view text) {
  line(".TP");
  line(tag);
  line(text.empty() ? "\\&" : text);
}

void Roff::synopsis(std::initializer_list<std::string_view> usages) {
  line(".nf");
  for (const std::string_view usage : usages) line("\\fB" + roff_text(usage) + "\\fR");
  line(".fi");
}

void Roff::code(std::string_view text, bool apart) {
  line(".RS 2");
  if (apart) line(".PP");
  line(".nf");
  for (const std::string& part : code_lines(text)) line("\\fB" + roff_text(part) + "\\fR");
  line(".fi");
  line(".RE");
}

void Roff::explanation(std::string_view text) {
  line(".RS 6");
  line(roff_text(text));
  line(".RE");
}

}  // namespace tool
