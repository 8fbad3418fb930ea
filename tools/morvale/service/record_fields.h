/// Every word of the result record by its name: for tables, for comparing records and for explaining them.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "service/camera_service.h"

namespace tool {

struct RecordField {
  std::string name;   ///< as a C++ programmer writes it: "ver", "meta[0].hsv[2]"
  size_t offset = 0;  ///< bytes from the record's start
  bool is_signed = true;
  std::string front, back;  ///< what the word means on each camera; empty: this camera does not write it

  const std::string& meaning(Camera camera) const { return camera == Camera::kFront ? front : back; }
};

constexpr int kMeasuredBlocks = 3;  ///< only the first three blocks of a front record carry a face

constexpr size_t kRecordWords = sizeof(PersonWholeMeta) / sizeof(int32_t);

/// In the order of the record's bytes, one for each of its 72 words.
const std::array<RecordField, kRecordWords>& record_fields();

/// The value of one word; brightCount is unsigned.
int64_t value_of(const PersonWholeMeta& record, const RecordField& field);

}  // namespace tool
