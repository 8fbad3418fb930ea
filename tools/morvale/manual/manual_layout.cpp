#include "manual/manual_layout.h"

#include <algorithm>

namespace tool {
namespace {

using Kind = ManualPart::Kind;

constexpr size_t kCodeIndent = 2;
constexpr size_t kExplanationIndent = 6;

std::string_view take_line(std::string_view& text) {
  const size_t end = std::min(text.find('\n'), text.size());
  const std::string_view line = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return line;
}

ManualPart indented_part(std::string_view line, size_t indent) {
  const std::string_view content = line.substr(indent);
  const size_t gap = content.find("  ");
  if (gap == std::string_view::npos) return {Kind::kCode, std::string(line.substr(kCodeIndent))};
  const size_t meaning = content.find_first_not_of(' ', gap);
  return {Kind::kTerm, std::string(content.substr(meaning)), std::string(content.substr(0, gap))};
}

/// Whether a line that would be a `kind` of its own goes on with the part above.
bool continues(const ManualPart& above, Kind kind) {
  return (kind == Kind::kParagraph && above.kind == kind) ||
         (kind == Kind::kExplanation && (above.kind == kind || above.kind == Kind::kTerm));
}

ManualPart part_of(std::string_view line) {
  const size_t indent = line.find_first_not_of(' ');
  if (indent >= kExplanationIndent) return {Kind::kExplanation, std::string(line.substr(indent))};
  if (indent >= kCodeIndent) return indented_part(line, indent);
  return {Kind::kParagraph, std::string(line.substr(indent))};
}

}  // namespace

std::vector<ManualPart> manual_parts(std::string_view help) {
  std::vector<ManualPart> parts;
  bool gap = true;
  while (!help.empty()) {
    std::string_view line = take_line(help);
    line = line.substr(0, line.find_last_not_of(' ') + 1);
    if (line.empty()) {
      gap = true;
      continue;
    }
    ManualPart part = part_of(line);
    part.after_gap = gap;
    if (!gap && continues(parts.back(), part.kind))
      parts.back().text += " " + part.text;
    else
      parts.push_back(std::move(part));
    gap = false;
  }
  return parts;
}

}  // namespace tool
