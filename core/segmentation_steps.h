/// The arithmetic of single values around the network.
#pragma once

#include <algorithm>
#include <cstdint>

namespace morvale {

/// A pixel byte as network input, -1..1: formed in double precision, stored as float32.
inline float network_input(uint8_t byte) {
  const double share = byte / 255.0;
  return static_cast<float>(share + share - 1.0);
}

/// A network score as byte: -10..+10 maps onto 0..255, truncated, clamped; NaN gives 0.
inline uint8_t score_byte(float score) {
  const float scaled = (score + 10.0f) * 255.0f / 20.0f;
  return scaled > 0.0f ? static_cast<uint8_t>(std::min(scaled, 255.0f)) : uint8_t{0};
}

}  // namespace morvale
