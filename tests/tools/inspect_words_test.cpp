#include "inspect/inspect_words.h"

#include <gtest/gtest.h>

#include <cstring>

namespace tool {
namespace {

PersonWholeMeta filled_with(uint32_t word) {
  PersonWholeMeta record;
  for (size_t at = 0; at < sizeof record; at += sizeof word)
    std::memcpy(reinterpret_cast<uint8_t*>(&record) + at, &word, sizeof word);
  return record;
}

TEST(InspectWords, AFrontRecordTellsOfItsFaces) {
  PersonWholeMeta record{};
  record.ver = 2;
  record.humanRatio = 33;
  record.meta[0] = {{11, 3}, 120, {9, 20, 50}, {30, 100, 200}, 108, {5, 10, 40, 0}};
  record.meta[1].faceYavg = 7;
  EXPECT_EQ(record_words(record, Camera::kFront),
            "  people are 33 % of the label map (humanRatio)\n"
            "  faces: 2 in the record (ver 2)\n"
            "  face 1   luma 120, 11 pixels above 200, 3 above 230, 108/1000 of the label map\n"
            "           hue 30 (21 to 35), saturation 100 (80 to 110), value 200 (150 to 240)\n"
            "  face 2   luma 7, 0 pixels above 200, 0 above 230, 0/1000 of the label map\n"
            "           hue 0 (0 to 0), saturation 0 (0 to 0), value 0 (0 to 0)\n");
  EXPECT_EQ(record_json(record, Camera::kFront).at("faces").elements()[0].at("hue").dump(),
            R"({"mean":30,"low":21,"high":35})");
}

TEST(InspectWords, ABackRecordTellsOfBoxHintAndGrid) {
  PersonWholeMeta record{};
  record.ver = 5;
  record.humanRatio = 12;
  const int32_t box[] = {220, 200, 140, 180};  // x, w, y, h
  std::memcpy(record.meta[0].box, box, sizeof box);
  record.meta[1].box[0] = static_cast<int32_t>(1u << 31 | 1u << 13 | 1u << 12);  // cells 0, 18 and 19
  record.meta[3].box[0] = 1 << (31 - (284 - 256));                               // the last cell
  record.meta[3].box[3] = 77;
  const std::string words = record_words(record, Camera::kBack);
  for (const char* part :
       {"bodies are 12 % of the label map", "candidate was seen (ver 5)",
        "left 220, top 140, 200 wide, 180 high", "resource hint: 77", "4 of 285 cells",
        "|#.................#|\n    |#..................|\n", "|..................#|\n    +"})
    EXPECT_NE(words.find(part), std::string::npos) << part << "\n" << words;
}

TEST(InspectWords, EveryBitPatternIsARecord) {
  EXPECT_NE(record_words({}, Camera::kFront).find("every word is 0"), std::string::npos);
  for (const uint32_t word : {0x80000000u, 0x7fffffffu, 0xffffffffu}) {
    const PersonWholeMeta record = filled_with(word);
    for (const Camera camera : {Camera::kFront, Camera::kBack}) {
      EXPECT_FALSE(record_words(record, camera).empty());
      EXPECT_EQ(words_json(record, camera).elements().size(), sizeof record / sizeof word);
    }
  }
  EXPECT_EQ(face_blocks(filled_with(5), Camera::kFront), 3);
  // Wider than the record's words: nothing wraps.
  EXPECT_EQ(record_json(filled_with(0x7fffffffu), Camera::kFront).at("faces").elements()[0].at("hue").dump(),
            R"({"mean":2147483647,"low":0,"high":4294967294})");
}

TEST(InspectWords, OffsetsAndHexAreTheBytes) {
  PersonWholeMeta record{};
  record.meta[0].brightCount[0] = 0xfffffffeu;
  record.meta[0].hsv[0] = -2;
  const std::string table = word_table(record, Camera::kFront), dump = hex_dump(record);
  EXPECT_NE(table.find("       8  meta[0].brightCount[0]   4294967294  "), std::string::npos) << table;
  EXPECT_NE(table.find("      32  meta[0].hsv[0]                   -2  face 1: trimmed mean: hue, degrees\n"),
            std::string::npos)
      << table;
  EXPECT_EQ(dump.substr(0, dump.find('\n')), "       0   00 00 00 00  00 00 00 00  fe ff ff ff  00 00 00 00");
  EXPECT_EQ(hex_digits(record).substr(64, 8), "feffffff");
}

}  // namespace
}  // namespace tool
