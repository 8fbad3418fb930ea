/// What an index says of a report, read back from the report's own data.
#include <algorithm>
#include <fstream>
#include <sstream>

#include "common/words.h"
#include "report/index_page.h"
#include "session/json.h"

namespace tool {
namespace {

using morvale::session::Json;

/// The data stand in a script element of their own, in which no "<" can be.
Json data_of(const std::filesystem::path& file) {
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  const std::string html = std::move(text).str();
  const size_t begin = html.find('>', html.find("id=\"report-data\"")) + 1;
  return morvale::session::parse_json(std::string_view(html).substr(begin, html.find('<', begin) - begin));
}

std::string events_text(const Json& data) {
  std::vector<std::pair<std::string, int>> kinds;
  for (const Json& event : data.at("events").elements()) {
    const std::string& kind = event.at("kind").text();
    const auto known =
        std::find_if(kinds.begin(), kinds.end(), [&](const auto& one) { return one.first == kind; });
    known == kinds.end() ? void(kinds.emplace_back(kind, 1)) : void(++known->second);
  }
  std::string text;
  for (const auto& [kind, count] : kinds)
    text += (text.empty() ? "" : ", ") + std::to_string(count) + " " + kind;
  return text;
}

/// The most persons in a frame, where the boxes are known.
std::string people_text(const Json& frames) {
  size_t most = 0;
  bool known = false;
  for (const Json& boxes : frames.at("boxes").elements()) {
    if (boxes.is_null()) continue;
    known = true;
    most = std::max(most, boxes.elements().size());
  }
  return known ? counted(most, "person box", "person boxes") + " at most" : "";
}

/// The picture in the middle of the run.
std::string picture_of(const Json& data) {
  const auto& pictures = data.at("pictures").elements();
  return pictures.empty() ? "" : "data:image/jpeg;base64," + pictures[pictures.size() / 2].text();
}

}  // namespace

IndexEntry entry_of_report(const std::filesystem::path& folder, const std::string& name) {
  IndexEntry entry;
  entry.title = name;
  const std::string link = name + "/report.html";
  if (!std::filesystem::exists(folder / link)) return entry;
  try {
    const Json data = data_of(folder / link);
    const Json& frames = data.at("frames");
    const Json& shape = data.at("geometries").elements().at(0);
    entry.facts.push_back(counted(frames.at("number").elements().size(), "frame") + ", " +
                          data.at("camera").text() + " camera, " + std::to_string(shape.at("width").int32()) +
                          " × " + std::to_string(shape.at("height").int32()));
    for (const std::string& fact : {people_text(frames), events_text(data)})
      if (!fact.empty()) entry.facts.push_back(fact);
    entry.picture = picture_of(data);
    entry.link = link;
  } catch (const std::exception&) {
    // Another version's report, or half of one: the title alone.
  }
  return entry;
}

}  // namespace tool
