#include "selfcheck/inputs.h"

#include <cstring>

namespace morvale::selfcheck {
namespace {

constexpr uint64_t kEveryByte = 0x0101010101010101;

/// Bits of the noise on every byte. Added to no more than 192, no byte carries into the next.
constexpr uint64_t kRough = 0x3f, kCalm = 0x07;

void append_plane(Bytes& to, int width, int height, int first, uint64_t noise, uint64_t seed) {
  Random random(seed);
  const size_t begin = to.size();
  to.resize(begin + static_cast<size_t>(width) * static_cast<size_t>(height) + sizeof(uint64_t));
  uint8_t* at = to.data() + begin;
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; x += 8) {
      const auto level = static_cast<uint64_t>(first + 90 * x / width + 60 * y / height);
      const uint64_t eight = level * kEveryByte + (random.word() & noise * kEveryByte);
      std::memcpy(at + static_cast<ptrdiff_t>(y) * width + x, &eight, sizeof eight);
    }
  }
  to.resize(to.size() - sizeof(uint64_t));
}

}  // namespace

Bytes bytes_of(Kind kind, size_t count, uint64_t seed) {
  Random random(seed);
  Bytes bytes(count);
  for (uint8_t& byte : bytes) {
    const uint64_t word = random.word() >> 40;
    byte = static_cast<uint8_t>(kind == Kind::kNoise      ? word
                                : kind == Kind::kExtremes ? (word & 1) * 255
                                                          : 112 + (word & 31));
  }
  return bytes;
}

Bytes nv21_frame(int width, int height, uint64_t seed) {
  Bytes frame;
  append_plane(frame, width, height, 30, kRough, 2 * seed);
  append_plane(frame, width, height / 2, 40, seed % 2 == 0 ? kRough : kCalm, 2 * seed + 1);
  return frame;
}

ScoreMap::ScoreMap(int width, int height, uint64_t seed)
    : bytes(5 * static_cast<size_t>(width) * static_cast<size_t>(height) + 1),
      width_(width),
      height_(height),
      random_(seed) {
  for (size_t i = 0; i < bytes.size(); ++i)
    bytes[i] = static_cast<uint8_t>(random_.below(60) + (i % 5 == 0 ? 150 : 0));
}

ScoreMap& ScoreMap::blob(int x, int y, int width, int height, int label) {
  const int base = 150 + random_.below(70);
  for (int j = 0; j < height; ++j) {
    for (int i = 0; i < width; ++i) {
      const int across = (2 * i + 1 - width) * height, down = (2 * j + 1 - height) * width;
      if (across * across + down * down > width * height * width * height) continue;
      if (x + i >= width_ || y + j >= height_) continue;
      uint8_t* scores = cell(x + i, y + j);
      scores[0] = static_cast<uint8_t>(random_.below(170));
      scores[label] = static_cast<uint8_t>(base + random_.below(256 - base));
    }
  }
  return *this;
}

ScoreMap& ScoreMap::blobs(int count) {
  for (int k = 0; k < count; ++k) {
    const int width = 2 + random_.below(width_ / 2 + 1), height = 2 + random_.below(height_ / 2 + 1);
    const int x = random_.below(width_), y = random_.below(height_);
    blob(x, y, width, height, 1 + random_.below(4));
  }
  return *this;
}

ScoreMap& ScoreMap::squares(int side, int pitch) {
  for (int y = 0; y < height_; ++y) {
    for (int x = 0; x < width_; ++x) {
      if (x % pitch < side && y % pitch < side) std::memcpy(cell(x, y), "\1\1\372\1\1", 5);
    }
  }
  return *this;
}

ScoreMap& ScoreMap::confetti() {
  for (uint8_t& byte : bytes) byte = static_cast<uint8_t>(random_.below(200));
  for (size_t i = 0; i + 5 < bytes.size(); i += 5)
    bytes[i + static_cast<size_t>(random_.below(5))] = static_cast<uint8_t>(195 + random_.below(60));
  return *this;
}

std::vector<Bytes> ScoreMap::planes() const {
  std::vector<Bytes> planes(5);
  for (size_t i = 0; i + 1 < bytes.size(); ++i) planes[i % 5].push_back(bytes[i]);
  return planes;
}

std::vector<float> ScoreMap::network_scores() const {
  // Byte b is the whole interval from b * 20 / 255 - 10 to the next: its middle is safe from rounding.
  const auto score = [](int byte) { return (static_cast<float>(byte) + 0.5f) * (20.0f / 255.0f) - 10.0f; };
  std::vector<float> scores;
  for (size_t i = 0; i + 1 < bytes.size(); ++i) scores.push_back(score(bytes[i]));
  while (scores.size() < 5 * static_cast<size_t>(width_) * static_cast<size_t>(width_))
    scores.push_back(score(scores.size() % 5 == 0 ? 200 : 20));
  return scores;
}

}  // namespace morvale::selfcheck
