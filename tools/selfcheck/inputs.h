/// Made-up inputs, the same on every processor and in every build: whole numbers all the way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace morvale::selfcheck {

using Bytes = std::vector<uint8_t>;

class Random {
 public:
  explicit Random(uint64_t seed) : state_((seed + 1) * 0x9e3779b97f4a7c15) {}

  uint64_t word() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 7;
    state_ ^= state_ << 17;
    return state_;
  }
  /// 0 .. limit - 1
  int below(int limit) { return static_cast<int>((word() >> 33) % static_cast<uint64_t>(limit)); }

 private:
  uint64_t state_;
};

/// Noise finds most slips, extremes the sums that leave their type or miss a clamp, grey the ties and the
/// small differences.
enum class Kind { kNoise, kExtremes, kGrey };
constexpr Kind kKinds[] = {Kind::kNoise, Kind::kExtremes, Kind::kGrey};

Bytes bytes_of(Kind kind, size_t count, uint64_t seed);

/// A packed NV21 frame: a slope with noise on it, brighter to the bottom right. With an odd seed neighbours
/// have nearly one colour, as skin has.
Bytes nv21_frame(int width, int height, uint64_t seed);

/// A label map: five scores a cell, cell by cell, and one byte more for the sixth plane of the split.
class ScoreMap {
 public:
  /// All background.
  ScoreMap(int width, int height, uint64_t seed);

  /// An ellipse that fills the box; in most of its cells `label` wins.
  ScoreMap& blob(int x, int y, int width, int height, int label);
  /// Blobs at random places.
  ScoreMap& blobs(int count);
  /// Squares of one size, apart from each other: which of them comes first?
  ScoreMap& squares(int side, int pitch);
  /// Every cell has a winner of its own: more regions than there are labels.
  ScoreMap& confetti();

  Bytes bytes;

  /// Plane k holds the scores of label k.
  std::vector<Bytes> planes() const;
  /// Network scores that become these bytes, for a square map: what is missing below the rows is background.
  std::vector<float> network_scores() const;

 private:
  uint8_t* cell(int x, int y) { return bytes.data() + 5 * (y * width_ + x); }

  int width_, height_;
  Random random_;
};

}  // namespace morvale::selfcheck
