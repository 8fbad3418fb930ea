#include "scene/camera.h"

#include <morvale/core/globals.h>
#include "core/frame_geometry.h"
#include "scene/random.h"

namespace morvale::scene {
namespace {

constexpr float kAbsent = -7.0f, kPresent = 8.0f, kNever = -9.0f, kScoreNoise = 0.3f;

uint8_t to_byte(float value) { return static_cast<uint8_t>(std::clamp(value + 0.5f, 0.0f, 255.0f)); }

/// Bright light runs softly into white instead of being cut there.
uint8_t display(float light) {
  const float x = std::max(light, 0.0f);
  return to_byte(255.0f * std::sqrt(std::min(1.25f * x / (1.0f + 0.30f * x), 1.0f)));
}

}  // namespace

std::vector<uint8_t> develop(const Canvas& canvas) {
  std::vector<uint8_t> rgb;
  rgb.reserve(canvas.light.size() * 3);
  for (const Colour& c : canvas.light)
    for (const float channel : {c.r, c.g, c.b}) rgb.push_back(display(channel));
  return rgb;
}

std::vector<uint8_t> nv21_of(const std::vector<uint8_t>& rgb, int width, int height, float grain,
                             uint32_t seed) {
  const auto w = static_cast<size_t>(width), h = static_cast<size_t>(height);
  std::vector<uint8_t> nv21(w * h * 3 / 2);
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      const size_t i = static_cast<size_t>(y) * w + static_cast<size_t>(x);
      const float luma = 0.299f * rgb[3 * i] + 0.587f * rgb[3 * i + 1] + 0.114f * rgb[3 * i + 2];
      nv21[i] = to_byte(luma + grain * (2.0f * hash_unit(x, y, seed) - 1.0f));
    }
  }
  uint8_t* chroma = nv21.data() + w * h;
  for (size_t y = 0; y < h; y += 2) {
    for (size_t x = 0; x < w; x += 2) {
      float mean[3];
      for (size_t c = 0; c < 3; ++c) {
        const size_t i = 3 * (y * w + x) + c;
        mean[c] = 0.25f * static_cast<float>(rgb[i] + rgb[i + 3] + rgb[i + 3 * w] + rgb[i + 3 * w + 3]);
      }
      *chroma++ = to_byte(128.0f + 0.5f * mean[0] - 0.418688f * mean[1] - 0.081312f * mean[2]);
      *chroma++ = to_byte(128.0f - 0.168736f * mean[0] - 0.331264f * mean[1] + 0.5f * mean[2]);
    }
  }
  return nv21;
}

namespace {

/// The label under every pixel of the network's square input: the shrunk picture at the top left, its mirror
/// below as far as it reaches, background elsewhere.
std::vector<uint8_t> padded_labels(const std::vector<uint8_t>& labels, int width, int height, int side) {
  const FrameGeometry shrunk = frame_geometry(height, width, side);
  const double scale = static_cast<double>(std::max(width, height)) / side;
  const auto source = [scale](int at, int size) {
    return std::min(static_cast<int>((at + 0.5) * scale), size - 1);
  };
  std::vector<uint8_t> padded;
  for (int y = 0; y < side; ++y) {
    const int row = y < shrunk.height ? y : 2 * shrunk.height - 1 - y;
    for (int x = 0; x < side; ++x) {
      const bool picture = row >= 0 && x < shrunk.width;
      padded.push_back(picture
                           ? labels[static_cast<size_t>(source(row, height)) * static_cast<size_t>(width) +
                                    static_cast<size_t>(source(x, width))]
                           : uint8_t{0});
    }
  }
  return padded;
}

/// How much of a cell, and of half a cell around it, each label has.
std::array<float, morvale::kLabels> shares(const std::vector<uint8_t>& padded, int side, int cell_x,
                                           int cell_y, int cell) {
  std::array<float, morvale::kLabels> shares{};
  int pixels = 0;
  const int reach = cell / 2;
  for (int y = std::max(cell_y * cell - reach, 0); y < std::min((cell_y + 1) * cell + reach, side); ++y) {
    for (int x = std::max(cell_x * cell - reach, 0); x < std::min((cell_x + 1) * cell + reach, side); ++x) {
      shares[padded[static_cast<size_t>(y) * static_cast<size_t>(side) + static_cast<size_t>(x)]] += 1.0f;
      ++pixels;
    }
  }
  for (float& share : shares) share /= static_cast<float>(pixels);
  return shares;
}

}  // namespace

std::vector<float> scores_of(const std::vector<uint8_t>& labels, int width, int height,
                             const NetworkShape& network, uint32_t seed) {
  const std::vector<uint8_t> padded = padded_labels(labels, width, height, network.input);
  const int cell = network.input / network.output;
  std::vector<float> scores;
  for (int y = 0; y < network.output; ++y) {
    for (int x = 0; x < network.output; ++x) {
      const std::array<float, morvale::kLabels> part = shares(padded, network.input, x, y, cell);
      for (int label = 0; label < morvale::kLabels; ++label) {
        const float chance = kScoreNoise * (2.0f * hash_unit(x * morvale::kLabels + label, y, seed) - 1.0f);
        const float sure = kAbsent + (kPresent - kAbsent) * part[static_cast<size_t>(label)];
        scores.push_back((label == 3 ? kNever : sure) + chance);
      }
    }
  }
  return scores;
}

}  // namespace morvale::scene
