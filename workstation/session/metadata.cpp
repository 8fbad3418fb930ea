#include "session/metadata.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <string_view>
#include <utility>

#include "session/hash.h"
#include "session/json.h"

namespace morvale::session {
namespace {

constexpr const char* kFormat = "morvale-session";

[[noreturn]] void refuse(const std::string& what) { throw std::runtime_error(what); }

Json parse_object(const std::string& text) {
  Json json = parse_json(text);
  if (!json.is_object()) refuse("is no JSON object");
  return json;
}

const Json& member(const Json& json, const char* key) {
  const Json* found = json.find(key);
  if (found == nullptr) refuse(std::string("\"") + key + "\" is missing");
  return *found;
}

/// The library would turn 1.5 or 2^40 into some int32; a bundle is refused instead.
int32_t to_int32(const Json& value, const char* key) {
  try {
    return value.int32();
  } catch (const JsonError&) {
    refuse(std::string("\"") + key + "\" is no 32-bit integer");
  }
}

int32_t int32_at(const Json& json, const char* key) { return to_int32(member(json, key), key); }

std::optional<int32_t> int32_if_any(const Json& json, const char* key) {
  return json.find(key) != nullptr ? std::optional(int32_at(json, key)) : std::nullopt;
}

bool bool_at(const Json& json, const char* key) {
  const Json& value = member(json, key);
  if (!value.is_bool()) refuse(std::string("\"") + key + "\" is neither true nor false");
  return value.boolean();
}

/// JSON has no NaN and no infinity: they are strings, which Python's float() takes as they are. A finite
/// float is written as the double of the same value and so comes back bit for bit.
Json float_json(float value) {
  if (std::isnan(value)) return "nan";
  if (std::isinf(value)) return value > 0 ? "inf" : "-inf";
  return static_cast<double>(value);
}

float float_at(const Json& json, const char* key) {
  const Json& value = member(json, key);
  if (value == Json("nan")) return std::numeric_limits<float>::quiet_NaN();
  if (value == Json("inf")) return std::numeric_limits<float>::infinity();
  if (value == Json("-inf")) return -std::numeric_limits<float>::infinity();
  if (!value.is_number() || std::abs(value.number()) > std::numeric_limits<float>::max()) {
    refuse(std::string("\"") + key + "\" is no 32-bit float");
  }
  return static_cast<float>(value.number());
}

std::string string_at(const Json& json, const char* key) {
  const Json& value = member(json, key);
  if (!value.is_text()) refuse(std::string("\"") + key + "\" is no text");
  return value.text();
}

/// A bundle from elsewhere must not make its reader open files outside it.
std::string file_at(const Json& json, const char* key, std::string_view folder) {
  if (json.find(key) == nullptr) return {};
  std::string name = string_at(json, key);
  const bool inside = name.size() > folder.size() && name.starts_with(folder) &&
                      name.find('/', folder.size()) == std::string::npos &&
                      name.find('\0') == std::string::npos;
  if (!inside || name == std::string(folder) + "." || name == std::string(folder) + "..") {
    refuse(std::string("\"") + key + "\" names no file in " + std::string(folder));
  }
  return name;
}

Json faces_json(const MorvaleData_t& record) {
  Json faces = Json::array();
  for (int i = 0; i < std::min(record.faceCount, morvale::kMaxFaces); ++i) {
    const FaceRect& face = record.faces[i];
    faces.push_back(Json::array({face.x, face.y, face.w, face.h}));
  }
  return faces;
}

void read_faces(const Json& faces, MorvaleData_t& record) {
  const int count = std::clamp(record.faceCount, 0, morvale::kMaxFaces);
  if (!faces.is_array() || faces.elements().size() != static_cast<size_t>(count)) {
    refuse("\"faces\" does not hold " + std::to_string(count) + " rectangles");
  }
  for (int i = 0; i < count; ++i) {
    const Json& face = faces.elements()[static_cast<size_t>(i)];
    if (!face.is_array() || face.elements().size() != 4)
      refuse("\"faces\" holds something that is no [x, y, w, h]");
    const auto side = [&](size_t at) { return to_int32(face.elements()[at], "faces"); };
    record.faces[i] = {side(0), side(1), side(2), side(3)};
  }
}

/// The files of a frame: their keys, and where the line has their names and hashes.
struct FileKey {
  const char* key;
  std::string_view folder;
  std::string FrameLine::*name;
  std::string FrameHashes::*hash;
};
constexpr FileKey kFiles[] = {{"nv21", "frames/", &FrameLine::pixels, &FrameHashes::pixels},
                              {"thin", "frames/", &FrameLine::thin, &FrameHashes::thin},
                              {"logits", "logits/", &FrameLine::logits, &FrameHashes::logits},
                              {"labels", "labels/", &FrameLine::labels, &FrameHashes::labels},
                              {"preview", "previews/", &FrameLine::preview, &FrameHashes::preview}};
constexpr const char* kRecordHash = "record";

constexpr std::pair<ChromaPlace, const char*> kChromaPlaces[] = {
    {ChromaPlace::kFound, "found"}, {ChromaPlace::kBehind, "behind"}, {ChromaPlace::kApart, "apart"}};

const char* chroma_text(ChromaPlace place) {
  return std::find_if(std::begin(kChromaPlaces), std::end(kChromaPlaces),
                      [&](const auto& known) { return known.first == place; })
      ->second;
}

/// Version 1 had "chroma_follows" only: true also where a pointer led to where the stride leads.
ChromaPlace read_chroma(const Json& json) {
  if (json.find("chroma") == nullptr)
    return bool_at(json, "chroma_follows") ? ChromaPlace::kFound : ChromaPlace::kApart;
  const std::string text = string_at(json, "chroma");
  for (const auto& [place, name] : kChromaPlaces) {
    if (text == name) return place;
  }
  refuse("\"chroma\" is none of \"found\", \"behind\", \"apart\"");
}

Json later_json(const LaterRecord& later) {
  return {{"camera_type", later.camera_type},
          {"width", later.width},
          {"height", later.height},
          {"stride", later.stride},
          {"has_luma", later.has_luma}};
}

LaterRecord read_later(const Json& json) {
  if (!json.is_object()) refuse("\"later\" is no JSON object");
  return {int32_at(json, "camera_type"), int32_at(json, "width"), int32_at(json, "height"),
          int32_at(json, "stride"), bool_at(json, "has_luma")};
}

Json hashes_json(const FrameHashes& hashes) {
  Json json = {{kRecordHash, hashes.record}};
  for (const FileKey& file : kFiles)
    if (!(hashes.*file.hash).empty()) json[file.key] = hashes.*file.hash;
  return json;
}

FrameHashes read_hashes(const Json& json) {
  FrameHashes hashes;
  const Json* object = json.find("hashes");
  if (object == nullptr) return hashes;
  hashes.record = string_at(*object, kRecordHash);
  for (const FileKey& file : kFiles)
    if (object->find(file.key) != nullptr) hashes.*file.hash = string_at(*object, file.key);
  return hashes;
}

}  // namespace

std::string session_text(const SessionInfo& info) {
  Json json{{"format", kFormat},
            {"version", kBundleVersion},
            {"camera_type", info.camera_type},
            {"pad_size", info.pad_size},
            {"net_size", info.net_size},
            {"open_result", info.open_result},
            {"debug_level", info.debug_level},
            {"made_by", info.made_by}};
  if (!info.library.empty()) json["library"] = info.library;
  return sealed(json.dump(2) + "\n");
}

SessionInfo parse_session(const std::string& text) {
  const Json json = parse_object(text);
  if (!is_intact(text)) refuse("is not as it was written");
  if (string_at(json, "format") != kFormat) refuse("describes no session");
  const int32_t version = int32_at(json, "version");
  if (version < 1 || version > kBundleVersion) {
    refuse("is of version " + std::to_string(version) + "; this program reads versions 1 to " +
           std::to_string(kBundleVersion));
  }
  SessionInfo info;
  info.camera_type = int32_at(json, "camera_type");
  info.pad_size = int32_at(json, "pad_size");
  info.net_size = int32_at(json, "net_size");
  info.open_result = int32_at(json, "open_result");
  info.debug_level = int32_if_any(json, "debug_level").value_or(0);
  info.made_by = string_at(json, "made_by");
  if (json.find("library") != nullptr) info.library = string_at(json, "library");
  constexpr int32_t kLargestNetSize = 256;  // what a slot of the label-map rings holds
  if (info.net_size < 1 || info.net_size > kLargestNetSize || info.pad_size != 4 * info.net_size) {
    refuse("a model of " + std::to_string(info.pad_size) + " pixels and " + std::to_string(info.net_size) +
           " cells a side is none of the library's");
  }
  return info;
}

std::string frame_text(int index, const FrameLine& line) {
  const MorvaleData_t& record = line.input.record;
  Json json{{"frame", index},
            {"camera_type", record.cameraType},
            {"width", record.width},
            {"height", record.height},
            {"stride", record.stride},
            {"gate_level", float_json(record.gateLevel)},
            {"face_count", record.faceCount},
            {"faces", faces_json(record)},
            {"qerm_hint", record.qermHint},
            {"is_udc", record.isUDC},
            {"has_planes", line.input.has_planes},
            {"chroma", chroma_text(line.input.chroma)},
            {"after_process", line.input.after_process},
            {"process", line.process_result}};
  if (line.input.later) json["later"] = later_json(*line.input.later);
  if (line.execute_result) json["execute"] = *line.execute_result;
  if (line.network_ms) json["network_ms"] = *line.network_ms;
  for (const FileKey& file : kFiles)
    if (!(line.*file.name).empty()) json[file.key] = line.*file.name;
  if (!line.hashes.record.empty()) json["hashes"] = hashes_json(line.hashes);
  return sealed(json.dump() + "\n");
}

FrameLine parse_frame(int index, const std::string& text) {
  const Json json = parse_object(text);
  if (!is_intact(text)) refuse("the line is not as it was written");
  if (int32_at(json, "frame") != index) refuse("\"frame\" is not " + std::to_string(index));
  FrameLine line;
  MorvaleData_t& record = line.input.record;
  record.cameraType = int32_at(json, "camera_type");
  record.width = int32_at(json, "width");
  record.height = int32_at(json, "height");
  record.stride = int32_at(json, "stride");
  record.gateLevel = float_at(json, "gate_level");
  record.faceCount = int32_at(json, "face_count");
  read_faces(member(json, "faces"), record);
  record.qermHint = int32_at(json, "qerm_hint");
  record.isUDC = int32_at(json, "is_udc");
  line.input.has_planes = bool_at(json, "has_planes");
  line.input.chroma = read_chroma(json);
  line.input.after_process = bool_at(json, "after_process");
  if (const Json* later = json.find("later")) line.input.later = read_later(*later);
  line.process_result = int32_at(json, "process");
  line.execute_result = int32_if_any(json, "execute");
  if (const Json* network_ms = json.find("network_ms")) {
    if (!network_ms->is_number()) refuse("\"network_ms\" is no number");
    line.network_ms = network_ms->number();
  }
  for (const FileKey& file : kFiles) line.*file.name = file_at(json, file.key, file.folder);
  if (!line.pixels.empty() && !line.thin.empty()) refuse("has both \"nv21\" and \"thin\"");
  line.hashes = read_hashes(json);
  return line;
}

}  // namespace morvale::session
