/// Sizes that writer and reader agree on.
#pragma once

#include <cstdint>

#include <morvale/core/globals.h>
#include "session/bundle.h"

namespace morvale::session {

inline constexpr const char* kSessionFile = "session.json";
inline constexpr const char* kMetadataFile = "metadata.jsonl";
inline constexpr const char* kRecordsFile = "records.bin";

inline int32_t row_bytes(const MorvaleData_t& record) {
  return record.stride == 0 ? record.width : record.stride;
}

/// Bytes of the frame's pixels; 0 for a record that names no picture.
inline uint64_t pixel_bytes(const MorvaleData_t& record) {
  const int64_t stride = row_bytes(record), height = record.height;
  if (record.width < 1 || height < 1 || stride < record.width) return 0;
  return static_cast<uint64_t>(stride * (height + height / 2));  // below 2^63: both factors are below 2^32
}

/// Scores of one network run.
inline size_t logit_count(const SessionInfo& info) {
  return static_cast<size_t>(info.net_size) * static_cast<size_t>(info.net_size) * morvale::kLabels;
}

/// A label map is some whole rows of the network's output.
inline bool is_label_map(const SessionInfo& info, uint64_t bytes) {
  const uint64_t row = static_cast<uint64_t>(info.net_size) * morvale::kLabels;
  return bytes > 0 && bytes % row == 0 && bytes <= logit_count(info);
}

}  // namespace morvale::session
