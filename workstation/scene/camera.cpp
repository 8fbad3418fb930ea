#include "scene/camera.h"

#include <morvale/core/globals.h>
#include "core/frame_geometry.h"
#include "scene/random.h"

namespace morvale::scene {
namespace {

constexpr float kAbsent = -7.0f, kPresent = 8.0f, kNever = -9.0f, kScoreNoise = 0.3f;

uint8_t to_byte(float value) {
  return static_cast<uint8_t>(static_cast<int>(std::min(std::max(value + 0.5f, 0.0f), 255.0f)));
}

/// Bright light runs softly into white instead of being cut there.
uint8_t display(float light) {
  const float x = std::max(light, 0.0f);
  return to_byte(255.0f * std::sqrt(std::min(1.25f * x / (1.0f + 0.30f * x), 1.0f)));
}

}  // namespace

void develop(const Canvas& canvas, std::vector<uint8_t>& rgb) {
  const size_t channels = 3 * canvas.index(0, canvas.bottom());
  const float* light = &canvas.light.front().r;
  uint8_t* out = rgb.data();
  for (size_t i = 0; i < channels; ++i) out[i] = display(light[i]);
}

namespace {

/// One row of luma, with the camera's noise. In two loops: only the second, without steps of three bytes,
/// becomes vectors, and has most of the work.
void write_luma(const uint8_t* rgb, int y, int width, float grain, uint32_t seed, uint8_t* luma) {
  constexpr int kStretch = 256;
  float bright[kStretch];
  for (int begin = 0; begin < width; begin += kStretch) {
    const int count = std::min(kStretch, width - begin);
    for (int i = 0; i < count; ++i, rgb += 3) bright[i] = 0.299f * rgb[0] + 0.587f * rgb[1] + 0.114f * rgb[2];
    for (int i = 0; i < count; ++i)
      luma[begin + i] = to_byte(bright[i] + grain * (2.0f * hash_unit(begin + i, y, seed) - 1.0f));
  }
}

/// One row of V,U pairs, of two rows of pixels.
void write_chroma(const uint8_t* upper, const uint8_t* lower, int width, uint8_t* chroma) {
  for (int x = 0; x < width; x += 2, upper += 6, lower += 6) {
    const auto mean = [=](int c) {
      return 0.25f * static_cast<float>(upper[c] + upper[c + 3] + lower[c] + lower[c + 3]);
    };
    const float r = mean(0), g = mean(1), b = mean(2);
    chroma[x] = to_byte(128.0f + 0.5f * r - 0.418688f * g - 0.081312f * b);
    chroma[x + 1] = to_byte(128.0f - 0.168736f * r - 0.331264f * g + 0.5f * b);
  }
}

}  // namespace

void write_nv21(const Canvas& canvas, const std::vector<uint8_t>& rgb, float grain, uint32_t seed,
                std::vector<uint8_t>& nv21) {
  const int width = canvas.width;
  const auto row = [width](int y) { return static_cast<size_t>(y) * static_cast<size_t>(width); };
  for (int y = 0; y < canvas.rows; ++y)
    write_luma(&rgb[3 * row(y)], canvas.top + y, width, grain, seed, &nv21[row(canvas.top + y)]);
  uint8_t* chroma = &nv21[row(canvas.height + canvas.top / 2)];
  for (int y = 0; y < canvas.rows; y += 2)
    write_chroma(&rgb[3 * row(y)], &rgb[3 * row(y + 1)], width, chroma + row(y / 2));
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
