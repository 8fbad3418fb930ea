#include "scenes/truth_file.h"

#include <cmath>
#include <fstream>
#include <nlohmann/json.hpp>

#include "common/command.h"

namespace tool {
namespace {

using morvale::scene::PersonTruth;
using morvale::scene::SceneTruth;
using nlohmann::ordered_json;

double hundredths(double value) { return std::round(value * 100) / 100; }

ordered_json json_of(const FaceRect& box) { return {{"x", box.x}, {"y", box.y}, {"w", box.w}, {"h", box.h}}; }

FaceRect box_of(const ordered_json& json) {
  return {json.at("x").get<int32_t>(), json.at("y").get<int32_t>(), json.at("w").get<int32_t>(),
          json.at("h").get<int32_t>()};
}

ordered_json json_of(const PersonTruth& person) {
  ordered_json hsv = ordered_json::array();
  for (const double value : person.hsv) hsv.push_back(hundredths(value));
  return {{"face", json_of(person.face)},
          {"head", json_of(person.head)},
          {"person", json_of(person.person)},
          {"hsv", hsv}};
}

SceneTruth truth_of(const ordered_json& json) {
  SceneTruth truth;
  truth.person_share = json.at("personShare").get<double>();
  truth.body_share = json.at("bodyShare").get<double>();
  for (const ordered_json& person : json.at("people")) {
    truth.people.push_back({box_of(person.at("face")), box_of(person.at("head")), box_of(person.at("person")),
                            person.at("hsv").get<std::array<double, 3>>()});
  }
  truth.grid = json.at("grid").get<decltype(truth.grid)>();
  for (const std::string& row : truth.grid)
    if (row.size() != morvale::scene::kTruthColumns) throw std::runtime_error("a grid row of another length");
  return truth;
}

}  // namespace

std::filesystem::path truth_path(const std::filesystem::path& bundle) { return bundle / "truth.jsonl"; }

std::string truth_line(int frame, const SceneTruth& truth) {
  ordered_json people = ordered_json::array();
  for (const PersonTruth& person : truth.people) people.push_back(json_of(person));
  const ordered_json line = {{"frame", frame},
                             {"personShare", hundredths(truth.person_share)},
                             {"bodyShare", hundredths(truth.body_share)},
                             {"people", people},
                             {"grid", truth.grid}};
  return line.dump() + "\n";
}

std::vector<SceneTruth> read_truth(const std::filesystem::path& bundle) {
  const std::filesystem::path path = truth_path(bundle);
  std::ifstream file(path);
  if (!file)
    throw UsageError(path.string() +
                     " cannot be read; only what morvale scene makes has a truth to compare with.");
  std::vector<SceneTruth> truths;
  for (std::string line; std::getline(file, line);) {
    try {
      truths.push_back(truth_of(ordered_json::parse(line)));
    } catch (const std::exception&) {
      throw UsageError(path.string() + ": line " + std::to_string(truths.size() + 1) +
                       " is not a frame's truth; make the scene anew.");
    }
  }
  return truths;
}

}  // namespace tool
