#include "diff/diff_records.h"

#include <gtest/gtest.h>

#include <cstring>
#include <map>

#include "common/command.h"

namespace tool {
namespace {

/// A record that is 0 but for {offset: value}.
PersonWholeMeta record(const std::map<size_t, int64_t>& words) {
  PersonWholeMeta record{};
  for (const auto& [offset, value] : words) {
    const auto word = static_cast<uint32_t>(value);
    std::memcpy(reinterpret_cast<uint8_t*>(&record) + offset, &word, sizeof word);
  }
  return record;
}

RecordsDiff compare(const std::vector<PersonWholeMeta>& a, const std::vector<PersonWholeMeta>& b,
                    Camera camera = Camera::kFront, const std::vector<std::string>& texts = {}) {
  Tolerances tolerances;
  for (const std::string& text : texts) tolerances.add(text);
  return compare_records(a, b, tolerances, [&](int) { return camera; });
}

std::vector<std::string> names(const RecordsDiff& diff) {
  std::vector<std::string> names;
  for (const FieldDifferences& field : diff.fields) names.push_back(record_fields()[field.field].name);
  return names;
}

TEST(DiffRecords, FirstFrameAndFieldAndTheTable) {
  const RecordsDiff diff =
      compare({record({{4, 30}, {36, 100}}), record({{4, 30}, {36, 100}}), record({{4, 31}}), record({})},
              {record({{4, 30}, {36, 100}}), record({{4, 30}, {36, 90}, {44, 1}}), record({{4, 21}, {36, 7}}),
               record({})});
  ASSERT_TRUE(diff.first);
  EXPECT_EQ((std::vector<int64_t>{diff.first->frame, diff.first->a, diff.first->b}),
            (std::vector<int64_t>{1, 100, 90}));
  EXPECT_EQ(names(diff), (std::vector<std::string>{"humanRatio", "meta[0].hsv[1]", "meta[0].skinRatio"}));
  const FieldDifferences& saturation = diff.fields[1];
  EXPECT_EQ((std::vector<int64_t>{saturation.frames, saturation.first_frame, saturation.largest.value}),
            (std::vector<int64_t>{2, 1, 10}));
  EXPECT_EQ((std::vector<int>{diff.compared, diff.differing_frames, diff.tolerated_frames}),
            (std::vector<int>{4, 2, 0}));
}

TEST(DiffRecords, HowFarValuesAreApart) {
  constexpr Camera kFront = Camera::kFront, kBack = Camera::kBack;
  const struct {
    Camera camera;
    size_t offset;
    int64_t a, b, largest;
    const char* unit;
  } cases[] = {
      {kFront, 32, 359, 1, 2, "degrees"}, {kFront, 200, 1, 359, 2, "degrees"},
      {kFront, 32, 0, 360, 0, "degrees"}, {kFront, 32, 400, 20, 380, ""},  // no hue: not on the circle
      {kFront, 36, 359, 1, 358, ""},      {kBack, 32, 359, 1, 358, ""},
      {kFront, 8, 0, -1, 4294967295, ""}, {kFront, 16, 0, -1, 1, ""},
      {kFront, 104, 0, -1, 1, ""},        {kBack, 104, 0, -1, 32, "cells"},
      {kBack, 216, -8, 0, 29, "cells"},   {kBack, 220, 0, -1, 1, ""},
      {kBack, 228, 0, -1, 1, ""},         {kBack, 48, 7, 0, 7, ""}};
  for (const auto& c : cases) {
    const RecordsDiff diff = compare({record({{c.offset, c.a}})}, {record({{c.offset, c.b}})}, c.camera);
    ASSERT_EQ(diff.fields.size(), 1u) << c.offset;
    EXPECT_EQ(record_fields()[diff.fields[0].field].offset, c.offset);
    EXPECT_EQ(diff.fields[0].largest.value, c.largest) << c.offset;
    EXPECT_STREQ(diff.fields[0].largest.unit, c.unit) << c.offset;
  }
}

TEST(DiffRecords, TheLastToleranceThatNamesAFieldCounts) {
  const PersonWholeMeta a = record({{4, 30}, {32, 359}, {88, 10}}), b = record({{4, 31}, {32, 1}, {88, 13}});
  const struct {
    std::vector<std::string> tolerances, differing;
  } cases[] = {{{"*=3"}, {}},
               {{"*=2"}, {"meta[1].hsv[0]"}},
               {{"meta[*].hsv[*]=3", "humanRatio=1"}, {}},
               {{"meta[*].hsv[*]=3"}, {"humanRatio"}},
               {{"humanRatio=0", "*=3"}, {}},
               {{"*=3", "humanRatio=0"}, {"humanRatio"}},
               {{"meta[1]*=3", "human*=1"}, {"meta[0].hsv[0]"}},
               {{"*[0]=3", "*Ratio=1"}, {}}};
  for (const auto& c : cases) {
    const RecordsDiff diff = compare({a}, {b}, Camera::kFront, c.tolerances);
    EXPECT_EQ(names(diff), c.differing) << c.tolerances[0];
    EXPECT_EQ(diff.tolerated_frames, c.differing.empty() ? 1 : 0) << c.tolerances[0];
  }
}

TEST(DiffRecords, ToleranceThatSaysNothingIsRefused) {
  Tolerances tolerances;
  for (const char* text : {"luma=1", "ver", "ver=-1", "ver=1x", "=", "ver=99999999999999999999"})
    EXPECT_THROW(tolerances.add(text), UsageError) << text;
}

}  // namespace
}  // namespace tool
