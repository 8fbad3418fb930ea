#include "scene/shapes.h"

namespace morvale::scene {
namespace {

float power4(float x) { return x * x * x * x; }

}  // namespace

Hit Blob::at(float x, float y) const {
  float v = (y - cy) / ry;
  const float half_width = rx * (1.0f - taper * std::clamp(v, 0.0f, 1.2f));
  const float u = (x - cx - lean * (y - cy)) / half_width;
  v += bend * u * u;
  const float height = endless && v > 0 ? 0.0f : v;
  const float q = square ? power4(u) + power4(height) : u * u + height * height;
  // The distance to the outline, by the slope of q: exact enough for a fade of a few pixels.
  const float du = (square ? 4.0f * u * u * u : 2.0f * u) / half_width;
  const float dv = (square ? 4.0f * height * height * height : 2.0f * height) / ry;
  const float slope = std::sqrt(du * du + dv * dv);
  const float distance = (q - 1.0f) / std::max(slope, 1e-6f);
  const float z = std::sqrt(std::max(0.0f, 1.0f - q));
  const float nx = square ? u * u * u : u, ny = square ? height * height * height : height;
  const float length = std::sqrt(nx * nx + ny * ny + z * z);
  const float scale = length > 0 ? 1.0f / length : 0.0f;
  return {std::clamp(0.5f - distance / softness, 0.0f, 1.0f),
          u,
          v,
          1.0f - q,
          {nx * scale, ny * scale, z * scale}};
}

namespace {

Blob::Range clipped(float low, float high, int size) {
  // The nearest float of a far-off edge may lie outside int: cut it first.
  const auto limit = [size](float edge) {
    return static_cast<int>(std::clamp(std::floor(edge), 0.0f, static_cast<float>(size)));
  };
  return {limit(low), limit(high + 2.0f)};
}

}  // namespace

Blob::Range Blob::columns(int size) const {
  const float reach = rx + std::abs(lean) * ry * (1.0f + std::abs(bend)) + softness;
  return endless ? clipped(cx - rx - softness, cx + rx + softness, size)
                 : clipped(cx - reach, cx + reach, size);
}

Blob::Range Blob::rows(int size) const {
  const float reach = ry * (1.0f + std::abs(bend)) + softness;
  return endless ? Range{clipped(cy - reach, cy, size).begin, size} : clipped(cy - reach, cy + reach, size);
}

Canvas::Canvas(int width_, int height_)
    : width(width_),
      height(height_),
      light(static_cast<size_t>(width_) * static_cast<size_t>(height_), Colour{0, 0, 0}),
      surface(light.size(), Surface::kBackground),
      owner(light.size(), kNobody) {}

}  // namespace morvale::scene
