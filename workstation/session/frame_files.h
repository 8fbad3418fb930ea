/// Sizes that writer and reader agree on.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

#include <morvale/core/globals.h>
#include "session/bundle.h"

namespace morvale::session {

inline constexpr const char* kSessionFile = "session.json";
inline constexpr const char* kMetadataFile = "metadata.jsonl";
inline constexpr const char* kRecordsFile = "records.bin";

inline int32_t row_bytes(const MorvaleData_t& record) {
  return record.stride == 0 ? record.width : record.stride;
}

/// Bytes of the luma plane as the library takes it: rows of `stride` bytes, or of `width` where the stride is
/// no row length. 0 for a record that names no plane.
inline int64_t luma_bytes(const MorvaleData_t& record) {
  constexpr int64_t kMaxSide = 1 << 23, kMaxBytes = std::numeric_limits<int32_t>::max();
  const int64_t width = record.width, height = record.height;
  if (height < 1 || height >= kMaxSide) return 0;
  for (const int64_t row : {std::max<int64_t>(record.stride, width), width}) {
    if (row >= 1 && row < kMaxSide && row * height <= kMaxBytes) return row * height;
  }
  return 0;
}

/// Where the chroma plane begins in the frame's pixels.
inline int64_t chroma_offset(const FrameInput& input) {
  const MorvaleData_t& record = input.record;
  return input.chroma == ChromaPlace::kFound ? int64_t{row_bytes(record)} * record.height
                                             : luma_bytes(record);
}

/// Bytes of the frame's pixels; 0 for a record that names no picture.
inline uint64_t pixel_bytes(const FrameInput& input) {
  const int64_t width = input.record.width, height = input.record.height, chroma = chroma_offset(input);
  if (width < 1 || luma_bytes(input.record) == 0 || chroma < 0) return 0;
  // A stride below the width finds the chroma plane inside the luma rows.
  const int64_t bytes = chroma < width * height ? std::max(width * height, chroma + width * (height / 2))
                                                : chroma + chroma / height * (height / 2);
  return static_cast<uint64_t>(bytes);  // all factors are below 2^32, and luma_bytes bounds the height
}

/// The most bytes of pixels that a thin or compressed frame may stand for: a small file must not take all
/// memory.
inline constexpr uint64_t kMostUnpackedPixels = uint64_t{512} << 20;

/// The most bytes of a thin frame: all four neighbours of each pixel of the largest input that a label-map
/// ring has room for, and their places.
inline constexpr uint64_t kMostThinBytes = uint64_t{16} << 20;

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
