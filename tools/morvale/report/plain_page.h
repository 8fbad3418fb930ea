/// What the pages without a frame in them have in common.
#pragma once

#include <string>
#include <string_view>

namespace tool {

/// The page up to the rules of its own style, in light and dark.
inline constexpr std::string_view kPlainHead = R"(<!doctype html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta name="viewport" content="width=device-width, initial-scale=1">
<meta name="color-scheme" content="light dark">
<link rel="icon" href="data:,">
<style>
:root { --page: #f6f6f4; --surface: #fff; --text: #15181e; --muted: #586070; --line: #e0e2e7; --bad: #c02525; --mark: #2563c9; }
@media (prefers-color-scheme: dark) {
  :root { --page: #0e1116; --surface: #161a21; --text: #e9ecf2; --muted: #9ca6b7; --line: #2a303b; --bad: #ff8a80; --mark: #6ea8ff; }
}
body { margin: 0 auto; max-width: 1920px; padding: 16px clamp(14px, 2vw, 28px) 40px; background: var(--page); color: var(--text);
  font: 15px/1.5 ui-sans-serif, system-ui, -apple-system, "Segoe UI", Roboto, "Noto Sans", sans-serif; }
)";

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
