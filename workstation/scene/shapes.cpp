#include "scene/shapes.h"

namespace morvale::scene {
namespace {

Blob::Range clipped(float low, float high, int first, int last) {
  // The nearest float of a far-off edge may lie outside int: cut it first.
  const auto limit = [=](float edge) {
    return static_cast<int>(
        std::clamp(std::floor(edge), static_cast<float>(first), static_cast<float>(last)));
  };
  return {limit(low), limit(high + 2.0f)};
}

}  // namespace

namespace {

/// x * x for an ellipse's outline, x * x * x * x for a fuller one's.
template <bool kSquare>
float power(float x) {
  return kSquare ? x * x * x * x : x * x;
}
template <bool kSquare>
float slope_of_power(float x) {
  return kSquare ? 4.0f * x * x * x : 2.0f * x;
}

}  // namespace

template <bool kSquare>
void BlobRow::measure_all(const Blob blob, int x, int y, int count) {
  const float down = static_cast<float>(y) + 0.5f - blob.cy, straight = down / blob.ry;
  const float half_width = blob.rx * (1.0f - blob.taper * std::clamp(straight, 0.0f, 1.2f));
  const float shift = blob.lean * down;
  for (int i = 0; i < count; ++i) {
    const float u = (static_cast<float>(x + i) + 0.5f - blob.cx - shift) / half_width;
    const float v = straight + blob.bend * u * u;
    const float height = blob.endless ? std::min(v, 0.0f) : v;
    const float q = power<kSquare>(u) + power<kSquare>(height);
    // To the outline it is as far as the slope of q says: exact enough for a fade of a few pixels.
    const float du = slope_of_power<kSquare>(u) / half_width;
    const float dv = slope_of_power<kSquare>(height) / blob.ry;
    const float distance = (q - 1.0f) / std::max(std::sqrt(du * du + dv * dv), 1e-6f);
    const float nx = kSquare ? u * u * u : u, ny = kSquare ? height * height * height : height;
    const float nz = std::sqrt(std::max(0.0f, 1.0f - q));
    const float length = std::sqrt(nx * nx + ny * ny + nz * nz);
    const float scale = length > 0 ? 1.0f / length : 0.0f;
    u_[i] = u;
    v_[i] = v;
    inside_[i] = 1.0f - q;
    nx_[i] = nx * scale;
    ny_[i] = ny * scale;
    nz_[i] = nz * scale;
    cover[i] = std::min(std::max(0.5f - distance / blob.softness, 0.0f), 1.0f);
  }
}

void BlobRow::measure(const Blob& blob, int x, int y, int count) {
  blob.square ? measure_all<true>(blob, x, y, count) : measure_all<false>(blob, x, y, count);
}

Blob::Range Blob::columns(int first, int last) const {
  const float reach = rx + std::abs(lean) * ry * (1.0f + std::abs(bend)) + softness;
  return endless ? clipped(cx - rx - softness, cx + rx + softness, first, last)
                 : clipped(cx - reach, cx + reach, first, last);
}

Blob::Range Blob::rows(int first, int last) const {
  const float reach = ry * (1.0f + std::abs(bend)) + softness;
  return endless ? Range{clipped(cy - reach, cy, first, last).begin, last}
                 : clipped(cy - reach, cy + reach, first, last);
}

Canvas::Canvas(int width_, int height_, int most_rows) : width(width_), height(height_) {
  const size_t pixels = static_cast<size_t>(width) * static_cast<size_t>(most_rows);
  light.resize(pixels);
  surface.resize(pixels);
  owner.resize(pixels);
}

void Canvas::begin(int top_, int rows_, const Colour* behind) {
  top = top_;
  rows = rows_;
  const auto pixels = static_cast<std::ptrdiff_t>(index(0, bottom()));
  std::copy_n(behind, pixels, light.begin());
  std::fill_n(surface.begin(), pixels, Surface::kBackground);
  std::fill_n(owner.begin(), pixels, kNobody);
}

void Canvas::mark(int x, int y, const float* cover, int count, Surface seen, uint8_t person) {
  Surface* surfaces = &surface[index(x, y)];
  uint8_t* owners = &owner[index(x, y)];
  for (int i = 0; i < count; ++i) {
    surfaces[i] = cover[i] < 0.5f ? surfaces[i] : seen;
    owners[i] = cover[i] < 0.5f ? owners[i] : person;
  }
}

}  // namespace morvale::scene
