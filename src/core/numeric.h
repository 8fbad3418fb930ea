/// Conversions that must not depend on the processor.
#pragma once

#include <cstdint>
#include <limits>

// Marks a function whose unsigned sums and products leave their type on purpose, for builds that end the
// process where one does (a device's, and the fuzzers').
#if defined(__clang__)
#define MORVALE_WRAPS __attribute__((no_sanitize("unsigned-integer-overflow")))
#else
#define MORVALE_WRAPS
#endif

namespace morvale {

/// Truncates toward zero and saturates; NaN gives 0. A plain cast is undefined outside int32, and processors
/// differ there.
inline int32_t to_int32(double value) {
  constexpr double kLow = std::numeric_limits<int32_t>::min();
  constexpr double kHigh = std::numeric_limits<int32_t>::max();
  if (value != value) return 0;
  if (value <= kLow) return std::numeric_limits<int32_t>::min();
  if (value >= kHigh) return std::numeric_limits<int32_t>::max();
  return static_cast<int32_t>(value);
}

/// A product formed in 32 bits, as the rules of the records form it.
MORVALE_WRAPS inline int32_t wrapping_product(int64_t a, int64_t b) {
  return static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
}

}  // namespace morvale
