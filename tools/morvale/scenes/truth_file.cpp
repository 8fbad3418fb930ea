#include "scenes/truth_file.h"

#include <cmath>
#include <fstream>

#include "common/command.h"
#include "session/bundle.h"
#include "session/file.h"
#include "session/json.h"

namespace tool {
namespace {

using morvale::scene::PersonTruth;
using morvale::scene::SceneTruth;
using morvale::session::Json;

double hundredths(double value) { return std::round(value * 100) / 100; }

Json json_of(const FaceRect& box) { return {{"x", box.x}, {"y", box.y}, {"w", box.w}, {"h", box.h}}; }

FaceRect box_of(const Json& json) {
  return {json.at("x").int32(), json.at("y").int32(), json.at("w").int32(), json.at("h").int32()};
}

Json json_of(const PersonTruth& person) {
  Json hsv = Json::array();
  for (const double value : person.hsv) hsv.push_back(hundredths(value));
  return {{"face", json_of(person.face)},
          {"head", json_of(person.head)},
          {"person", json_of(person.person)},
          {"hsv", hsv}};
}

SceneTruth truth_of(const Json& json) {
  SceneTruth truth;
  truth.person_share = json.at("personShare").number();
  truth.body_share = json.at("bodyShare").number();
  for (const Json& person : json.at("people").elements()) {
    const Json::Array& hsv = person.at("hsv").elements();
    truth.people.push_back({box_of(person.at("face")),
                            box_of(person.at("head")),
                            box_of(person.at("person")),
                            {hsv.at(0).number(), hsv.at(1).number(), hsv.at(2).number()}});
  }
  const Json::Array& rows = json.at("grid").elements();
  for (size_t row = 0; row < truth.grid.size(); ++row) truth.grid[row] = rows.at(row).text();
  for (const std::string& row : truth.grid)
    if (row.size() != morvale::scene::kTruthColumns) throw std::runtime_error("a grid row of another length");
  return truth;
}

}  // namespace

std::filesystem::path truth_path(const std::filesystem::path& bundle) { return bundle / "truth.jsonl"; }

std::string truth_line(int frame, const SceneTruth& truth) {
  Json people = Json::array();
  for (const PersonTruth& person : truth.people) people.push_back(json_of(person));
  const Json line = {{"frame", frame},
                     {"personShare", hundredths(truth.person_share)},
                     {"bodyShare", hundredths(truth.body_share)},
                     {"people", people},
                     {"grid", Json::list(truth.grid)}};
  return line.dump() + "\n";
}

std::vector<SceneTruth> read_truth(const std::filesystem::path& bundle) {
  const std::filesystem::path path = truth_path(bundle);
  if (!std::ifstream(path))
    throw UsageError(path.string() +
                     " cannot be read; only what morvale scene makes has a truth to compare with.");
  std::vector<SceneTruth> truths;
  const auto take = [&](const std::string& line) {
    try {
      truths.push_back(truth_of(morvale::session::parse_json(line)));
    } catch (const std::exception&) {
      throw UsageError(path.string() + ": line " + std::to_string(truths.size() + 1) +
                       " is not a frame's truth; make the scene anew.");
    }
  };
  try {
    if (morvale::session::read_lines(path, take)) take("");  // cut off within a line
  } catch (const morvale::session::BundleError& error) {
    throw UsageError(std::string(error.what()) + "; make the scene anew.");
  }
  return truths;
}

}  // namespace tool
