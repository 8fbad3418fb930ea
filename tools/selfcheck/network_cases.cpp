/// The steps around the network, the colours by the pixel, and the orders.
#include <cmath>
#include <limits>

#include <morvale/morvale.h>
#include "selfcheck/cases.h"
#include "selfcheck/crash.h"
#include "selfcheck/inputs.h"

namespace morvale::selfcheck {
namespace {

constexpr int kSide = 64;

/// The scores at which a byte begins and the floats next to them, then numbers that no network gives, then
/// noise over the whole range and some beyond.
std::vector<float> telling_scores(size_t count) {
  std::vector<float> scores;
  for (int byte = -2; byte <= 258; ++byte) {
    float score = static_cast<float>(byte) * 20.0f / 255.0f - 10.0f;
    for (int k = 0; k < 4; ++k) score = std::nextafter(score, -100.0f);
    for (int k = 0; k < 9; ++k) scores.push_back(score = std::nextafter(score, 100.0f));
  }
  using Limits = std::numeric_limits<float>;
  for (const float odd :
       {Limits::quiet_NaN(), -Limits::quiet_NaN(), Limits::infinity(), -Limits::infinity(), Limits::max(),
        Limits::lowest(), Limits::denorm_min(), 3e9f, -3e9f, 3e8f, 0.0f, -0.0f})
    scores.push_back(odd);
  Random random(5);
  while (scores.size() < count) scores.push_back(static_cast<float>(random.below(26'000) - 13'000) / 1024.0f);
  return scores;
}

uint64_t of_output_conversions() {
  std::vector<float> scores = telling_scores(5 * kSide * kSide);
  Bytes bytes(scores.size() + 8, 77);
  Digest digest;
  for (const int net_size : {kSide, 33, 3, 1}) {
    NETSIZE = net_size;
    getOutputArr(scores.data(), bytes.data(), 5);
    digest.add(bytes.data(), bytes.size());
  }
  return digest.value();
}

uint64_t of_normalize_output() {
  std::vector<float> scores = telling_scores(2 * kSide * kSide);
  Bytes bytes(scores.size() + 8, 77);
  Digest digest;
  for (const int n : {kSide, 5, 1, 0}) {
    normalizeOutput(scores.data(), bytes.data(), n);
    digest.add(bytes.data(), bytes.size());
  }
  return digest.value();
}

uint64_t of_normalize_input() {
  Bytes bytes = bytes_of(Kind::kNoise, 3 * 32 * 32 + 8, 6);
  std::vector<float> floats(bytes.size(), -3.0f);
  Digest digest;
  for (const int n : {32, 7, 1, 0}) {
    normalizeInput(bytes.data(), floats.data(), n);
    digest.add(floats.data(), floats.size() * sizeof(float));
  }
  return digest.value();
}

/// Maps that differ a little, much, and completely.
template <uint8_t* (*kSmooth)(uint8_t*, uint8_t*, void*, int)>
uint64_t of_smoothing() {
  Digest digest;
  for (const int net_size : {kSide, 32, 7, 3, 2, 1}) {
    NETSIZE = net_size;
    const auto count = static_cast<size_t>(5 * net_size * net_size + 16);
    for (const Kind kind : kKinds) {
      for (const int reach : {3, 60, 256}) {
        Bytes before = bytes_of(kind, count, 7), now = before;
        Random random(8);
        for (uint8_t& byte : now) byte = static_cast<uint8_t>(byte + random.below(reach) - reach / 2);
        for (const int frame_count : {0, 1, 2}) {
          kSmooth(now.data(), before.data(), nullptr, frame_count);
          digest.add(now.data(), count);
          digest.add(before.data(), count);
          before[0] ^= 1;
        }
      }
    }
  }
  return digest.value();
}

uint64_t of_geometry() {
  Digest digest;
  for (const int pad_size : {256, 128}) {
    PADSIZE = pad_size;
    for (const int height : {1, 2, 97, 120, 240, 333, 360, 480, 720, 750, 1000, 1080, 1440, 1920, 4000}) {
      for (const int width : {1, 3, 128, 160, 255, 320, 480, 640, 641, 750, 1000, 1080, 1440, 1920, 3000}) {
        int fitted[3];
        calcSegFactor(height, width, fitted[0], fitted[1], fitted[2]);
        digest.add(fitted);
      }
    }
  }
  return digest.value();
}

uint64_t of_blur_weights() {
  Digest digest;
  for (const float sigma : {-1.0f, 0.0f, 0.3f, 0.8f, 1.5f, 3.0f, 12.0f, 500.0f}) {
    for (const int radius : {-1, 0, 1, 2, 5, 20, 127, 128}) {
      for (const int bits : {8, 14, 9}) {
        uint16_t weights[2 * 128 + 1] = {};
        digest.add(GFilterCreation(sigma, radius, bits, weights));
        digest.add(weights);
      }
    }
  }
  return digest.value();
}

/// Colours in even steps, with both ends of every channel.
template <class Channel, void (*kConvert)(int, int, int, Channel*)>
uint64_t of_pixels() {
  Digest digest;
  for (int b = 0; b <= 255; b += 5) {
    for (int g = 0; g <= 255; g += 5) {
      for (int r = 0; r <= 255; r += 5) {
        Channel hsv[3];
        kConvert(b, g, r, hsv);
        digest.add(hsv);
      }
    }
  }
  return digest.value();
}

uint64_t of_orders() {
  Digest digest;
  for (const int a : {-5, 0, 3, 3, 9}) {
    for (const int b : {-7, 0, 3, 4}) {
      PersonMeta left{}, right{};
      left.skinRatio = a;
      right.skinRatio = b;
      digest.add(cmp({a, 1}, {b, 2}) * 2 + cmp_m(left, right));
    }
  }
  return digest.value();
}

}  // namespace

void measure_network(Figures& figures) {
  constexpr struct {
    const char* name;
    uint64_t (*measure)();
  } kSteps[] = {{"getOutputArr", of_output_conversions},
                {"normalizeOutput", of_normalize_output},
                {"normalizeInput", of_normalize_input},
                {"segmetationIIR_Front", of_smoothing<segmetationIIR_Front>},
                {"segmetationIIR_Back", of_smoothing<segmetationIIR_Back>},
                {"calcSegFactor", of_geometry},
                {"GFilterCreation", of_blur_weights},
                {"bgr2hsv_pixel", of_pixels<unsigned, bgr2hsv_pixel>},
                {"bgr2hsv_pixel_v2", of_pixels<int, bgr2hsv_pixel_v2>},
                {"cmp and cmp_m", of_orders}};
  for (const auto& step : kSteps) {
    case_under_way = step.name;
    figures.push_back({step.name, step.measure()});
  }
}

}  // namespace morvale::selfcheck
