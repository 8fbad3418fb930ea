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

/// The whole number at or below x, for numbers of the size of a picture's: the processor's own rounding need
/// not know how, and a call would keep compilers from making vectors.
inline int32_t floor_of(float x) {
  const auto toward_zero = static_cast<int32_t>(x);
  return static_cast<float>(toward_zero) > x ? toward_zero - 1 : toward_zero;
}

/// Smooth noise 0..1: grid values, blended by the cubic that is flat at the grid points. Neighbouring pixels
/// mostly lie between the same four grid points, so the last ones' values are kept.
class Noise {
 public:
  explicit Noise(uint32_t seed) : seed_(seed) { look_up(0, 0); }

  float at(float x, float y) {
    const int32_t ix = floor_of(x), iy = floor_of(y);
    if (ix != ix_ || iy != iy_) look_up(ix, iy);
    const auto ease = [](float t) { return t * t * (3.0f - 2.0f * t); };
    const float u = ease(x - static_cast<float>(ix)), v = ease(y - static_cast<float>(iy));
    const float top = top_left_ * (1.0f - u) + top_right_ * u;
    const float low = low_left_ * (1.0f - u) + low_right_ * u;
    return top * (1.0f - v) + low * v;
  }

 private:
  void look_up(int32_t ix, int32_t iy) {
    ix_ = ix;
    iy_ = iy;
    top_left_ = hash_unit(ix, iy, seed_);
    top_right_ = hash_unit(ix + 1, iy, seed_);
    low_left_ = hash_unit(ix, iy + 1, seed_);
    low_right_ = hash_unit(ix + 1, iy + 1, seed_);
  }

  uint32_t seed_;
  int32_t ix_, iy_;
  float top_left_, top_right_, low_left_, low_right_;
};

/// Three octaves of it, 0..1.
class RoughNoise {
 public:
  explicit RoughNoise(uint32_t seed) : octaves_{Noise(seed), Noise(seed + 1), Noise(seed + 2)} {}

  float at(float x, float y) {
    return octaves_[0].at(x, y) * 0.57f + octaves_[1].at(x * 2.1f, y * 2.1f) * 0.29f +
           octaves_[2].at(x * 4.3f, y * 4.3f) * 0.14f;
  }

 private:
  Noise octaves_[3];
};

/// A sine of `turns` full turns, by Bhaskara's quotient: off by at most 0.0017, the same everywhere.
inline float wave(float turns) {
  const float turn = turns - std::floor(turns);
  const float half = turn < 0.5f ? turn * 2.0f : turn * 2.0f - 1.0f;
  const float arch = half * (1.0f - half);
  const float sine = 16.0f * arch / (5.0f - 4.0f * arch);
  return turn < 0.5f ? sine : -sine;
}

}  // namespace morvale::scene
