/// The records' header for C against the one for C++, field by field.
#include "core/records_c.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <type_traits>

#include <morvale/core/records.h>

namespace {

template <class Field>
constexpr char kind_of() {
  if (std::is_same_v<Field, uint8_t*>) return 'p';
  using Value = std::remove_all_extents_t<Field>;
  if (std::is_same_v<Value, int32_t>) return 'i';
  if (std::is_same_v<Value, uint32_t>) return 'u';
  return std::is_same_v<Value, float> ? 'f' : 'r';
}

#define FIELD(record, field) \
  {#record "." #field, offsetof(record, field), sizeof(record::field), kind_of<decltype(record::field)>()},
constexpr RecordField kFields[] = {
#include "core/records_fields.inc"
};

TEST(RecordsInC, EveryFieldLiesWhereItLiesInCxx) {
  size_t covered = 0;
  const RecordField* in_c = kFieldsInC;
  for (const RecordField& field : kFields) {
    SCOPED_TRACE(field.name);
    ASSERT_STREQ(in_c->name, field.name);
    EXPECT_EQ(in_c->offset, field.offset);
    EXPECT_EQ(in_c->size, field.size);
    EXPECT_EQ(in_c->kind, field.kind);
    covered += field.size;
    ++in_c;
  }
  EXPECT_EQ(in_c->name, nullptr);
  // No field was left out: together they are as large as the records.
  EXPECT_EQ(covered, sizeof(FaceRect) + sizeof(MorvaleData_t) + sizeof(PersonMeta) + sizeof(PersonWholeMeta));
  EXPECT_EQ(kConstantsInC[0], morvale::kFrontCamera);
  EXPECT_EQ(kConstantsInC[1], morvale::kMaxFaces);
}

}  // namespace
