#include "inspect/inspect_words.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "service/record_fields.h"
#include "service/report_text.h"

namespace tool {
namespace {

using morvale::session::Json;

/// Mean, low and high of one channel. Wider than the record's words, which a damaged file fills with
/// anything.
struct Band {
  int64_t mean, low, high;
};

Band band_of(const PersonMeta& face, int channel) {
  const int64_t mean = face.hsv[channel];
  return {mean, mean - face.hsvMin[channel], mean + face.box[channel]};
}

std::string text_of(const Band& band) {
  return std::to_string(band.mean) + " (" + std::to_string(band.low) + " to " + std::to_string(band.high) +
         ")";
}

Json json_of(const Band& band) { return {{"mean", band.mean}, {"low", band.low}, {"high", band.high}}; }

bool is_cleared(const PersonWholeMeta& record) {
  const PersonWholeMeta cleared{};
  return std::memcmp(&record, &cleared, sizeof record) == 0;
}

std::string face_words(const PersonMeta& face, int number) {
  char text[160];
  std::snprintf(text, sizeof text,
                "  face %d   luma %d, %u pixels above 200, %u above 230, %d/1000 of the label map\n", number,
                face.faceYavg, face.brightCount[0], face.brightCount[1], face.skinRatio);
  return text + ("           hue " + text_of(band_of(face, 0)) + ", saturation " + text_of(band_of(face, 1)) +
                 ", value " + text_of(band_of(face, 2)) + "\n");
}

std::string front_words(const PersonWholeMeta& record) {
  const int faces = face_blocks(record, Camera::kFront);
  std::string text =
      "  people are " + std::to_string(record.humanRatio) + " % of the label map (humanRatio)\n";
  text += "  faces: " + std::to_string(faces) + " in the record (ver " + std::to_string(record.ver) + ")\n";
  for (int i = 0; i < faces; ++i) text += face_words(record.meta[i], i + 1);
  return text;
}

int occupied_cells(const PersonWholeMeta& record) {
  int cells = 0;
  for (const std::string& row : occupancy_grid(record))
    cells += static_cast<int>(std::count(row.begin(), row.end(), '1'));
  return cells;
}

std::string grid_words(const PersonWholeMeta& record) {
  const std::string edge = "    +" + std::string(kGridColumns, '-') + "+\n";
  std::string text = "  grid: " + std::to_string(occupied_cells(record)) + " of " +
                     std::to_string(kGridColumns * kGridRows) + " cells occupied\n" + edge;
  for (std::string row : occupancy_grid(record)) {
    std::replace(row.begin(), row.end(), '0', '.');
    std::replace(row.begin(), row.end(), '1', '#');
    text += "    |" + row + "|\n";
  }
  return text + edge;
}

std::string back_words(const PersonWholeMeta& record) {
  const FaceRect box = person_box(record);
  char text[256];
  std::snprintf(text, sizeof text,
                "  bodies are %d %% of the label map (humanRatio)\n"
                "  a person candidate was %s (ver %d)\n"
                "  person box: left %d, top %d, %d wide, %d high\n"
                "  resource hint: %d\n",
                record.humanRatio, record.ver == 5 ? "seen" : "not seen", record.ver, box.x, box.y, box.w,
                box.h, resource_hint(record));
  return text + grid_words(record);
}

std::string meaning_of(const RecordField& field, Camera camera) {
  const std::string& meaning = field.meaning(camera);
  return meaning.empty() ? "(not written on this camera)" : meaning;
}

}  // namespace

int face_blocks(const PersonWholeMeta& record, Camera camera) {
  FrameReport report;
  report.camera = camera;
  report.record = record;
  return measured_faces(report);
}

std::string record_words(const PersonWholeMeta& record, Camera camera) {
  if (is_cleared(record)) return "  nothing: every word is 0, as after Morvale_core_init and a gated frame\n";
  return camera == Camera::kFront ? front_words(record) : back_words(record);
}

Json record_json(const PersonWholeMeta& record, Camera camera) {
  Json json = {{"ver", record.ver}, {"humanRatio", record.humanRatio}};
  if (camera == Camera::kBack) {
    const FaceRect box = person_box(record);
    json["personBox"] = {{"x", box.x}, {"y", box.y}, {"w", box.w}, {"h", box.h}};
    json["qermHint"] = resource_hint(record);
    json["grid"] = Json::list(occupancy_grid(record));
    return json;
  }
  json["faces"] = Json::array();
  for (int i = 0; i < face_blocks(record, camera); ++i) {
    const PersonMeta& face = record.meta[i];
    json["faces"].push_back({{"luma", face.faceYavg},
                             {"brightCount", Json::list(face.brightCount)},
                             {"skinRatio", face.skinRatio},
                             {"hue", json_of(band_of(face, 0))},
                             {"saturation", json_of(band_of(face, 1))},
                             {"value", json_of(band_of(face, 2))}});
  }
  return json;
}

std::string word_table(const PersonWholeMeta& record, Camera camera) {
  std::string table = "  offset  field                         value  meaning\n";
  for (const RecordField& field : record_fields()) {
    char text[96];
    std::snprintf(text, sizeof text, "  %6zu  %-22s  %11lld  ", field.offset, field.name.c_str(),
                  static_cast<long long>(value_of(record, field)));
    table += text + meaning_of(field, camera) + "\n";
  }
  return table;
}

Json words_json(const PersonWholeMeta& record, Camera camera) {
  Json list = Json::array();
  for (const RecordField& field : record_fields()) {
    list.push_back({{"offset", field.offset},
                    {"field", field.name},
                    {"value", value_of(record, field)},
                    {"meaning", field.meaning(camera)}});
  }
  return list;
}

std::string hex_digits(const PersonWholeMeta& record) {
  const auto* bytes = reinterpret_cast<const uint8_t*>(&record);
  std::string digits;
  for (size_t i = 0; i < sizeof record; ++i) {
    digits += "0123456789abcdef"[bytes[i] >> 4];
    digits += "0123456789abcdef"[bytes[i] & 15];
  }
  return digits;
}

std::string hex_dump(const PersonWholeMeta& record) {
  constexpr size_t kBytesInLine = 16;
  const std::string digits = hex_digits(record);
  std::string dump;
  for (size_t i = 0; i < sizeof record; ++i) {
    if (i % kBytesInLine == 0) {
      char offset[16];
      std::snprintf(offset, sizeof offset, "  %6zu ", i);
      dump += offset;
    }
    dump += (i % 4 == 0 ? "  " : " ") + digits.substr(2 * i, 2);
    if (i % kBytesInLine == kBytesInLine - 1) dump += '\n';
  }
  return dump;
}

}  // namespace tool
