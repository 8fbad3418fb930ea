/// What of the runtime's answer may be read.
#pragma once

#include <algorithm>
#include <cstdint>

#include <morvale/core/vexa_runtime.h>

namespace morvale {

/// Whether the tensor holds `needed` scores. A runtime that names no shape is taken at its word.
inline bool holds_all_scores(const vexa::DataBuffer& tensor, int64_t needed) {
  if (tensor.data == nullptr) return false;
  if (tensor.shape.empty()) return true;
  int64_t held = 1;
  for (const int32_t size : tensor.shape) held = std::min(held * std::max(size, 0), needed);
  return held == needed;
}

}  // namespace morvale
