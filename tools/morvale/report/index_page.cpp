#include "report/index_page.h"

#include <cstdio>

#include "common/atomic_file.h"
#include "report/plain_page.h"

namespace tool {
namespace {

constexpr std::string_view kStyle = R"(h1 { font-size: 22px; margin: 0 0 14px; }
ul { display: grid; grid-template-columns: repeat(auto-fill, minmax(min(260px, 100%), 1fr)); gap: 14px; margin: 0; padding: 0; list-style: none; }
li { background: var(--surface); border: 1px solid var(--line); border-radius: 12px; overflow: hidden; }
li.bad { border-color: var(--bad); }
a { color: inherit; text-decoration: none; display: block; }
a:hover h2, a:focus-visible h2 { text-decoration: underline; }
img { display: block; width: 100%; aspect-ratio: 4 / 3; object-fit: contain; background: #20242c; }
h2 { font-size: 16px; margin: 10px 14px 2px; overflow-wrap: anywhere; }
p { margin: 0 14px; color: var(--muted); font-size: 13px; overflow-wrap: anywhere; }
p:first-of-type { color: var(--text); font-weight: 600; }
li.bad p:first-of-type { color: var(--bad); }
p:last-child { margin-bottom: 12px; }
</style>
)";

/// A file's name may hold whatever an address gives a meaning to.
std::string address(const std::string& path) {
  if (path.starts_with("data:")) return path;
  constexpr std::string_view kPlain = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-._~/";
  std::string written = "./";  // a name with a colon is no scheme
  for (const char c : path) {
    char code[4];
    std::snprintf(code, sizeof code, "%%%02X", static_cast<unsigned char>(c));
    written += kPlain.find(c) == std::string_view::npos ? code : std::string(1, c);
  }
  return written;
}

std::string html_of(const IndexEntry& entry) {
  std::string body;
  if (!entry.picture.empty())
    body += "<img loading=\"lazy\" alt=\"\" src=\"" + address(entry.picture) + "\">";
  body += "<h2>" + html_text(entry.title) + "</h2>";
  if (!entry.link.empty()) body = "<a href=\"" + address(entry.link) + "\">" + body + "</a>";
  for (const std::string& fact : entry.facts) body += "<p>" + html_text(fact) + "</p>";
  return (entry.good ? "<li>" : "<li class=\"bad\">") + body + "</li>\n";
}

}  // namespace

void write_index(const std::filesystem::path& folder, const std::string& heading,
                 const std::vector<IndexEntry>& entries) {
  const std::string title = html_text(heading);
  std::string page(kPlainHead);
  page += kStyle;
  page += "<title>" + title + "</title>\n</head>\n<body>\n<main>\n<h1>" + title + "</h1>\n<ul>\n";
  for (const IndexEntry& entry : entries) page += html_of(entry);
  page += "</ul>\n</main>\n</body>\n</html>\n";
  write_file(folder / "index.html", {page.begin(), page.end()});
}

}  // namespace tool
