/// Chance, texture and swing for made-up scenes. Every figure comes from integers, or from float additions,
/// products, quotients and square roots in a fixed order: these are exact to the last bit on every machine,
/// which sines, powers and the standard library's distributions are not.
#pragma once

#include <cmath>
#include <cstdint>

namespace morvale::scene {

/// SplitMix64. The same seed gives the same numbers everywhere.
class Random {
 public:
  explicit Random(uint64_t seed) : state_(seed) {}

  uint64_t next() {
    uint64_t z = state_ += 0x9e3779b97f4a7c15u;
    z = (z ^ (z >> 30)) * 0xbf58476d1ce4e5b9u;
    z = (z ^ (z >> 27)) * 0x94d049bb133111ebu;
    return z ^ (z >> 31);
  }
  int below(int count) { return static_cast<int>(next() % static_cast<uint64_t>(count)); }
  /// 0 up to but not 1, in steps of 2^-24: each is a float without rounding.
  float unit() { return static_cast<float>(next() >> 40) * (1.0f / 16777216.0f); }
  float between(float low, float high) { return low + (high - low) * unit(); }

 private:
  uint64_t state_;
};

/// A number for a grid point, 0 up to but not 1, without any state.
inline float hash_unit(int32_t x, int32_t y, uint32_t seed) {
  uint32_t h = static_cast<uint32_t>(x) * 0x8da6b343u ^ static_cast<uint32_t>(y) * 0xd8163841u ^ seed;
  h = (h ^ (h >> 15)) * 0x2c1b3c6du;
  h = (h ^ (h >> 12)) * 0x297a2d39u;
  return static_cast<float>((h ^ (h >> 15)) >> 8) * (1.0f / 16777216.0f);
}

/// Smooth noise 0..1: grid values, blended by the cubic that is flat at the grid points.
inline float noise(float x, float y, uint32_t seed) {
  const float fx = std::floor(x), fy = std::floor(y);
  const auto ix = static_cast<int32_t>(fx), iy = static_cast<int32_t>(fy);
  const auto ease = [](float t) { return t * t * (3.0f - 2.0f * t); };
  const float u = ease(x - fx), v = ease(y - fy);
  const float top = hash_unit(ix, iy, seed) * (1.0f - u) + hash_unit(ix + 1, iy, seed) * u;
  const float low = hash_unit(ix, iy + 1, seed) * (1.0f - u) + hash_unit(ix + 1, iy + 1, seed) * u;
  return top * (1.0f - v) + low * v;
}

/// Three octaves of it, 0..1.
inline float rough_noise(float x, float y, uint32_t seed) {
  return noise(x, y, seed) * 0.57f + noise(x * 2.1f, y * 2.1f, seed + 1) * 0.29f +
         noise(x * 4.3f, y * 4.3f, seed + 2) * 0.14f;
}

/// A sine of `turns` full turns, by Bhaskara's quotient: off by at most 0.0017, the same everywhere.
inline float wave(float turns) {
  const float turn = turns - std::floor(turns);
  const float half = turn < 0.5f ? turn * 2.0f : turn * 2.0f - 1.0f;
  const float arch = half * (1.0f - half);
  const float sine = 16.0f * arch / (5.0f - 4.0f * arch);
  return turn < 0.5f ? sine : -sine;
}

}  // namespace morvale::scene
