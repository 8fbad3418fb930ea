#include "ab/ab_verdict.h"

#include <algorithm>
#include <map>

#include "ab/ab_replay.h"
#include "common/command.h"
#include "inspect/inspect_source.h"

namespace tool {
namespace {

using morvale::session::Json;
using morvale::session::JsonError;

constexpr const char* kOutcomes[] = {"same", "changed", "failed"};

FieldChange change_of(const FieldDifferences& differences) {
  return {record_fields()[differences.field].name,
          differences.largest.unit,
          differences.frames,
          differences.first_frame,
          differences.largest.value,
          {differences.by_size.begin(), differences.by_size.end()}};
}

void compare(Verdict& verdict, const AbReplay& old_side, const AbReplay& new_side,
             const RecordSource& recorded, const Tolerances& tolerances) {
  const auto camera = [&](int frame) { return recorded.camera_at(frame, Camera::kFront); };
  const RecordsDiff diff = compare_records(old_side.records, new_side.records, tolerances, camera);
  verdict.changed_frames = diff.differing_frames;
  if (!diff.first) return;
  verdict.outcome = Outcome::kChanged;
  verdict.first_frame = diff.first->frame;
  verdict.first_field = record_fields()[diff.first->field].name;
  for (const FieldDifferences& differences : diff.fields) verdict.fields.push_back(change_of(differences));
}

Verdict failed(Verdict verdict, const std::string& why) {
  verdict.outcome = Outcome::kFailed;
  verdict.failure = why;
  return verdict;
}

}  // namespace

const char* name_of(Outcome outcome) { return kOutcomes[static_cast<size_t>(outcome)]; }

Verdict judge(const std::string& old_library, const std::string& new_library, const std::string& recording,
              const Tolerances& tolerances) {
  Verdict verdict;
  verdict.recording = recording;
  try {
    const RecordSource recorded = open_records(recording);
    if (!recorded.bundle) return failed(verdict, "it holds records alone, no frames to replay");
    verdict.frames = recorded.frame_count();
    const AbReplay old_side = replay_through(old_library, recording, verdict.frames);
    if (!old_side.failure.empty()) return failed(verdict, "old: " + old_side.failure);
    const AbReplay new_side = replay_through(new_library, recording, verdict.frames);
    if (!new_side.failure.empty()) return failed(verdict, "new: " + new_side.failure);
    compare(verdict, old_side, new_side, recorded, tolerances);
  } catch (const UsageError& error) {
    return failed(verdict, error.what());
  } catch (const morvale::session::BundleError& error) {
    return failed(verdict, error.what());
  }
  return verdict;
}

Json json_of(const Verdict& verdict) {
  Json fields = Json::array();
  for (const FieldChange& change : verdict.fields) {
    fields.push_back({{"field", change.field},
                      {"unit", change.unit},
                      {"frames", change.frames},
                      {"firstFrame", change.first_frame},
                      {"largest", change.largest},
                      {"bySize", Json::list(change.by_size)}});
  }
  return {{"recording", verdict.recording},
          {"verdict", name_of(verdict.outcome)},
          {"frames", verdict.frames},
          {"changedFrames", verdict.changed_frames},
          {"firstFrame", verdict.first_frame},
          {"firstField", verdict.first_field},
          {"fields", fields},
          {"failure", verdict.failure}};
}

Verdict verdict_of(const Json& json) {
  Verdict verdict;
  verdict.recording = json.at("recording").text();
  const auto* outcome = std::find(std::begin(kOutcomes), std::end(kOutcomes), json.at("verdict").text());
  if (outcome == std::end(kOutcomes)) throw JsonError("holds an unknown verdict");
  verdict.outcome = static_cast<Outcome>(outcome - kOutcomes);
  verdict.frames = json.at("frames").int32();
  verdict.changed_frames = json.at("changedFrames").int32();
  verdict.first_frame = json.at("firstFrame").int32();
  verdict.first_field = json.at("firstField").text();
  verdict.failure = json.at("failure").text();
  for (const Json& field : json.at("fields").elements()) {
    FieldChange change;
    change.field = field.at("field").text();
    change.unit = field.at("unit").text();
    change.frames = field.at("frames").int32();
    change.first_frame = field.at("firstFrame").int32();
    change.largest = static_cast<int64_t>(field.at("largest").number());
    for (const Json& frames : field.at("bySize").elements()) change.by_size.push_back(frames.int32());
    verdict.fields.push_back(std::move(change));
  }
  return verdict;
}

std::vector<FieldTotal> totals_of(const std::vector<Verdict>& verdicts) {
  std::map<std::string, FieldTotal> by_name;
  for (const Verdict& verdict : verdicts) {
    for (const FieldChange& change : verdict.fields) {
      FieldTotal& total = by_name[change.field];
      total.field = change.field;
      total.unit = change.unit;
      ++total.recordings;
      total.frames += change.frames;
      total.largest = std::max(total.largest, change.largest);
      total.by_size.resize(std::max(total.by_size.size(), change.by_size.size()));
      for (size_t size = 0; size < change.by_size.size(); ++size) total.by_size[size] += change.by_size[size];
    }
  }
  std::vector<FieldTotal> totals;
  for (const RecordField& field : record_fields())
    if (const auto found = by_name.find(field.name); found != by_name.end()) totals.push_back(found->second);
  return totals;
}

int count(const std::vector<Verdict>& verdicts, Outcome outcome) {
  return static_cast<int>(std::count_if(verdicts.begin(), verdicts.end(),
                                        [&](const Verdict& verdict) { return verdict.outcome == outcome; }));
}

std::vector<size_t> worst_first(const std::vector<Verdict>& verdicts) {
  std::vector<size_t> order;
  for (size_t i = 0; i < verdicts.size(); ++i)
    if (verdicts[i].outcome != Outcome::kSame) order.push_back(i);
  std::stable_sort(order.begin(), order.end(), [&](size_t a, size_t b) {
    const bool a_failed = verdicts[a].outcome == Outcome::kFailed,
               b_failed = verdicts[b].outcome == Outcome::kFailed;
    return a_failed != b_failed ? a_failed : verdicts[a].changed_frames > verdicts[b].changed_frames;
  });
  return order;
}

}  // namespace tool
