#include "bench/pictures.h"

namespace bench {
namespace {

constexpr int kScores = 5;
constexpr size_t kSpareBytes = 64;

class Noise {
 public:
  explicit Noise(uint32_t seed) : state_(seed * 2654435761u + 1) {}

  /// 0 .. limit - 1
  uint32_t below(uint32_t limit) {
    state_ = state_ * 1664525u + 1013904223u;
    return (state_ >> 16) % limit;
  }

 private:
  uint32_t state_;
};

void append_picture(Bytes& to, int width, int height, int channels, uint32_t seed) {
  Noise noise(seed);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const int slope = 40 + 100 * x / width + 60 * y / height;
      for (int k = 0; k < channels; ++k) {
        to.push_back(static_cast<uint8_t>(slope - 20 * k + static_cast<int>(noise.below(32))));
      }
    }
  }
}

size_t bytes_of(int width, int height, int channels) {
  return static_cast<size_t>(width) * static_cast<size_t>(height) * static_cast<size_t>(channels);
}

}  // namespace

Bytes picture(int width, int height, int channels, uint32_t seed) {
  Bytes bytes;
  bytes.reserve(bytes_of(width, height, channels) + kSpareBytes);
  append_picture(bytes, width, height, channels, seed);
  bytes.resize(bytes.size() + kSpareBytes);
  return bytes;
}

Bytes nv21_picture(int width, int height, uint32_t seed) {
  Bytes bytes;
  bytes.reserve(bytes_of(width, height, 1) * 3 / 2 + kSpareBytes);
  append_picture(bytes, width, height, 1, seed);
  append_picture(bytes, width / 2, height / 2, 2, seed + 1);
  bytes.resize(bytes.size() + kSpareBytes);
  return bytes;
}

ScoreMap::ScoreMap(int width, int height) : width_(width), bytes_(bytes_of(width, height, kScores) + 1) {
  Noise noise(7);
  for (size_t i = 0; i + 1 < bytes_.size(); ++i) {
    bytes_[i] = static_cast<uint8_t>((i % kScores == 0 ? 200 : 20) + noise.below(40));
  }
}

void ScoreMap::paint_blob(int x, int y, int width, int height, int label) {
  for (int j = 0; j < height; ++j) {
    for (int i = 0; i < width; ++i) {
      const double across = (2 * i + 1.0) / width - 1, down = (2 * j + 1.0) / height - 1;
      if (across * across + down * down > 1) continue;
      uint8_t* cell = bytes_.data() + kScores * ((y + j) * width_ + x + i);
      cell[0] = 30;
      cell[label] = 235;
    }
  }
}

std::vector<Bytes> ScoreMap::planes() const {
  std::vector<Bytes> planes(kScores);
  for (size_t i = 0; i + 1 < bytes_.size(); ++i) planes[i % kScores].push_back(bytes_[i]);
  return planes;
}

std::vector<float> ScoreMap::network_scores(int net_size) const {
  const auto score = [](int byte) { return (static_cast<float>(byte) + 0.5f) / 12.75f - 10.0f; };
  std::vector<float> scores;
  for (size_t i = 0; i + 1 < bytes_.size(); ++i) scores.push_back(score(bytes_[i]));
  while (scores.size() < bytes_of(net_size, net_size, kScores)) {
    scores.push_back(score(scores.size() % kScores == 0 ? 220 : 30));
  }
  return scores;
}

ScoreMap faces_on_grid(int width, int height, int count, int columns, int rows) {
  ScoreMap map(width, height);
  const int cell_width = width / columns, cell_height = height / rows;
  // The regions grow by 16 pixels, so that much stays free between faces where the grid is wide enough.
  const int face_width = cell_width > 28 ? cell_width - 18 : cell_width / 3;
  const int face_height = cell_height > 28 ? cell_height - 18 : cell_height / 3;
  for (int i = 0; i < count; ++i) {
    map.paint_blob(i % columns * cell_width + 6, i / columns * cell_height + 6, face_width, face_height, 2);
  }
  return map;
}

ScoreMap portrait() {
  ScoreMap map(64, 48);
  map.paint_blob(17, 5, 30, 38, 2);
  return map;
}

ScoreMap wide_portrait() {
  ScoreMap map(64, 36);
  map.paint_blob(20, 3, 24, 30, 2);
  return map;
}

ScoreMap person() {
  ScoreMap map(32, 18);
  map.paint_blob(10, 6, 12, 12, 1);
  map.paint_blob(13, 1, 6, 6, 2);
  return map;
}

}  // namespace bench
