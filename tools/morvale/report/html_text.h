#pragma once

#include <string>

namespace tool {

/// `text` as HTML shows it, in text and in attributes.
inline std::string html_text(const std::string& text) {
  std::string html;
  for (const char c : text) {
    switch (c) {
      case '&':
        html += "&amp;";
        break;
      case '<':
        html += "&lt;";
        break;
      case '>':
        html += "&gt;";
        break;
      case '"':
        html += "&quot;";
        break;
      default:
        html += c;
    }
  }
  return html;
}

}  // namespace tool
