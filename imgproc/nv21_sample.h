/// The YUV to RGB arithmetic that all converters share, and the samples that it works on.
#pragma once

#include <algorithm>
#include <cstdint>

namespace morvale {

struct Rgb {
  uint8_t r, g, b;
};

/// Which byte of a chroma pair comes first.
struct VuOrder {  // NV21
  static constexpr int kV = 0, kU = 1;
};
struct UvOrder {  // NV12
  static constexpr int kV = 1, kU = 0;
};

/// The three Q14 sums of a pixel, before they become bytes.
struct RgbSums {
  int32_t r, g, b;
};

template <class Order>
RgbSums rgb_sums(int luma, const uint8_t* pair) {
  const int v = pair[Order::kV] - 128;
  const int u = pair[Order::kU] - 128;
  const int y = luma << 14;
  return {y + 22458 * v, y - 11436 * v - 5532 * u, y + 28384 * u};
}

/// Whole blocks of eight truncate; everything else rounds. Neighbouring pixels of one flat area can so differ
/// by one. Both are part of the output: do not unify.
inline uint8_t block_byte(int32_t sum) { return static_cast<uint8_t>(std::clamp(sum >> 14, 0, 255)); }
inline uint8_t pixel_byte(int32_t sum) {
  return sum < -8192 ? uint8_t{0} : static_cast<uint8_t>(std::min((sum + 8192) >> 14, 255));
}

inline Rgb block_rule(RgbSums s) { return {block_byte(s.r), block_byte(s.g), block_byte(s.b)}; }
inline Rgb pixel_rule(RgbSums s) { return {pixel_byte(s.r), pixel_byte(s.g), pixel_byte(s.b)}; }

}  // namespace morvale
