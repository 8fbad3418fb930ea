#include "ab/ab_page.h"

#include <algorithm>
#include <string_view>

#include "ab/ab_table.h"
#include "common/atomic_file.h"
#include "report/plain_page.h"
#include "session/json.h"

namespace tool {
namespace {

using morvale::session::Json;

constexpr std::string_view kStyle = R"(h1 { font-size: 22px; margin: 0 0 4px; }
h2 { font-size: 17px; margin: 0 0 8px; }
section { background: var(--surface); border: 1px solid var(--line); border-radius: 12px; padding: 14px; margin-top: 14px; overflow-x: auto; }
p { margin: 0 0 8px; color: var(--muted); overflow-wrap: anywhere; }
code { overflow-wrap: anywhere; }
table { border-collapse: collapse; font-variant-numeric: tabular-nums; }
th, td { text-align: left; padding: 3px 16px 3px 0; border-bottom: 1px solid var(--line); vertical-align: middle; }
th { color: var(--muted); font-weight: 600; }
td.n, th.n { text-align: right; }
a { color: var(--mark); }
.bad { color: var(--bad); }
.bars { display: inline-flex; align-items: flex-end; gap: 2px; height: 28px; }
.bars span { width: 9px; background: var(--mark); min-height: 1px; }
.map { display: flex; gap: 12px; }
.map ul { margin: 0; padding: 0; list-style: none; font: 11px/14px ui-monospace, monospace; color: var(--muted); }
canvas { display: block; image-rendering: pixelated; cursor: crosshair; }
output { display: block; min-height: 1.5em; color: var(--muted); }
</style>
)";

/// Draws the map of fields and recordings; a click opens the recording's comparison where there is one.
constexpr std::string_view kScript = R"(
<script>
const map = JSON.parse(document.getElementById('map').textContent);
const canvas = document.querySelector('canvas'), said = document.querySelector('output');
if (canvas) {
  const wide = Math.max(2, Math.min(16, Math.floor(1100 / map.recordings.length))), high = 14;
  const ratio = window.devicePixelRatio || 1;
  canvas.width = map.recordings.length * wide * ratio;
  canvas.height = map.fields.length * high * ratio;
  canvas.style.width = `${map.recordings.length * wide}px`;
  canvas.style.height = `${map.fields.length * high}px`;
  const draw = () => {
    const context = canvas.getContext('2d');
    context.setTransform(ratio, 0, 0, ratio, 0, 0);
    context.clearRect(0, 0, canvas.width, canvas.height);
    context.fillStyle = getComputedStyle(document.documentElement).getPropertyValue('--mark');
    map.recordings.forEach((recording, x) => {
      for (const [y, frames] of recording.cells) {
        context.globalAlpha = 0.25 + 0.75 * frames / Math.max(1, recording.frames);
        context.fillRect(x * wide, y * high, Math.max(1, wide - 1), high - 1);
      }
    });
  };
  draw();
  matchMedia('(prefers-color-scheme: dark)').addEventListener('change', draw);
  const at = event => {
    const box = canvas.getBoundingClientRect();
    return [Math.floor((event.clientX - box.left) / wide), Math.floor((event.clientY - box.top) / high)];
  };
  canvas.addEventListener('pointermove', event => {
    const [x, y] = at(event), recording = map.recordings[x];
    if (!recording || !map.fields[y]) return;
    const cell = recording.cells.find(([field]) => field === y);
    said.textContent = `${recording.name}, ${map.fields[y]}: ${cell ? cell[1] : 0} of ${recording.frames} frames`;
  });
  canvas.addEventListener('click', event => {
    const link = map.recordings[at(event)[0]]?.link;
    if (link) location.href = link;
  });
}
</script>
)";

/// A thousand recordings need not stand in it.
std::string shortened(const std::string& command) {
  constexpr size_t kMost = 300;
  const size_t end = command.size() <= kMost ? std::string::npos : command.rfind(' ', kMost);
  return end == std::string::npos ? command : command.substr(0, end) + " …";
}

std::string cell(const std::string& text) { return "<td>" + text + "</td>"; }
std::string number_cell(int64_t value) { return "<td class=\"n\">" + std::to_string(value) + "</td>"; }

/// How often a change had so many binary digits: 1, 2 to 3, 4 to 7, ...
std::string bars(const std::vector<int64_t>& by_size) {
  const auto most = std::max<int64_t>(1, *std::max_element(by_size.begin(), by_size.end()));
  const auto last = std::find_if(by_size.rbegin(), by_size.rend(), [](int64_t frames) { return frames > 0; });
  std::string text = "<span class=\"bars\">";
  for (size_t size = 0; size < static_cast<size_t>(by_size.rend() - last); ++size) {
    const int64_t least = size == 0 ? 0 : int64_t{1} << (size - 1), largest = (int64_t{1} << size) - 1;
    const std::string range =
        std::to_string(least) + (largest > least ? " to " + std::to_string(largest) : "");
    text += "<span style=\"height:" + std::to_string(by_size[size] * 28 / most) + "px\" title=\"" + range +
            ": " + std::to_string(by_size[size]) + " frames\"></span>";
  }
  return text + "</span>";
}

std::string fields_section(const std::vector<FieldTotal>& totals) {
  if (totals.empty()) return "";
  std::string text =
      "<section><h2>How far each field moved</h2><p>The bars: frames by the size of the change, 1, 2 to 3, 4 "
      "to 7 and "
      "so on.</p><table><tr><th>Field<th class=\"n\">Recordings<th class=\"n\">Frames<th "
      "class=\"n\">Largest<th>Sizes</tr>\n";
  for (const FieldTotal& total : totals) {
    text += "<tr>" + cell("<code>" + total.field + "</code>") + number_cell(total.recordings) +
            number_cell(total.frames) + "<td class=\"n\">" + std::to_string(total.largest) + " " +
            total.unit + "</td>" + cell(bars(total.by_size)) + "</tr>\n";
  }
  return text + "</table></section>\n";
}

std::string verdict_row(const Verdict& verdict, const std::string& link) {
  const std::string name = html_text(verdict.recording);
  const std::string first = verdict.first_field.empty()
                                ? html_text(verdict.failure)
                                : "frame " + std::to_string(verdict.first_frame) + ", <code>" +
                                      html_text(verdict.first_field) + "</code>";
  return "<tr>" + cell(link.empty() ? name : "<a href=\"" + link + "\">" + name + "</a>") +
         (verdict.outcome == Outcome::kFailed ? "<td class=\"bad\">failed</td>" : cell("changed")) +
         number_cell(verdict.changed_frames) + number_cell(verdict.frames) + cell(first) + "</tr>\n";
}

std::string worst_section(const std::vector<Verdict>& verdicts, const std::vector<std::string>& links) {
  constexpr size_t kMost = 100;
  const std::vector<size_t> order = worst_first(verdicts);
  if (order.empty()) return "";
  std::string text =
      "<section><h2>Recordings that changed most</h2><table><tr><th>Recording<th>Verdict"
      "<th class=\"n\">Changed<th class=\"n\">Frames<th>First</tr>\n";
  for (size_t i = 0; i < std::min(order.size(), kMost); ++i)
    text += verdict_row(verdicts[order[i]], links[order[i]]);
  text += "</table>";
  if (order.size() > kMost) text += "<p>and " + std::to_string(order.size() - kMost) + " more.</p>";
  return text + "</section>\n";
}

/// What the script draws: of each changed recording its fields with the frames that changed.
Json map_of(const std::vector<Verdict>& verdicts, const std::vector<FieldTotal>& totals,
            const std::vector<std::string>& links) {
  Json fields = Json::array(), recordings = Json::array();
  for (const FieldTotal& total : totals) fields.push_back(total.field);
  for (size_t i = 0; i < verdicts.size(); ++i) {
    if (verdicts[i].fields.empty()) continue;
    Json cells = Json::array();
    for (const FieldChange& change : verdicts[i].fields) {
      const auto row = std::find_if(totals.begin(), totals.end(),
                                    [&](const FieldTotal& total) { return total.field == change.field; });
      cells.push_back(Json::array({static_cast<int64_t>(row - totals.begin()), change.frames}));
    }
    recordings.push_back({{"name", verdicts[i].recording},
                          {"frames", verdicts[i].frames},
                          {"cells", cells},
                          {"link", links[i]}});
  }
  return {{"fields", fields}, {"recordings", recordings}};
}

std::string map_section(const Json& map) {
  std::string data = map.dump();
  for (size_t at = 0; (at = data.find('<', at)) != std::string::npos;) data.replace(at, 1, "\\u003c");
  std::string text = "<script type=\"application/json\" id=\"map\">" + data + "</script>\n";
  if (map.at("recordings").elements().empty()) return text;
  std::string rows;
  for (const Json& field : map.at("fields").elements()) rows += "<li>" + field.text() + "</li>";
  return "<section><h2>Fields and recordings</h2><p>A column for each recording that changed, a row for each "
         "field, the fuller its colour the more of its frames.</p><output></output><div class=\"map\"><ul>" +
         rows +
         "</ul><canvas role=\"img\" aria-label=\"Map of the fields that changed in each recording\"></canvas>"
         "</div></section>\n" +
         text + std::string(kScript);
}

}  // namespace

void write_ab_page(const std::filesystem::path& folder, const std::vector<Verdict>& verdicts,
                   const std::vector<std::string>& links, const std::string& command) {
  const std::vector<FieldTotal> totals = totals_of(verdicts);
  const std::string title = summary(verdicts);
  std::string page(kPlainHead);
  page += kStyle;
  page += "<title>" + title + "</title>\n</head>\n<body>\n<main>\n<h1>" + title + "</h1>\n<p><code>" +
          html_text(shortened(command)) + "</code></p>\n";
  page += fields_section(totals);
  page += worst_section(verdicts, links);
  page += map_section(map_of(verdicts, totals, links));
  page += "</main>\n</body>\n</html>\n";
  std::error_code told_by_the_write;
  std::filesystem::create_directories(folder, told_by_the_write);
  write_file(folder / "index.html", {page.begin(), page.end()});
}

}  // namespace tool
