/// The light that falls on a scene.
#pragma once

#include "scene/scene.h"
#include "scene/shapes.h"

namespace morvale::scene {

struct Light {
  Vector direction;  ///< toward the lamp, length about 1
  Colour key;        ///< what the lamp adds
  Colour ambient;    ///< what comes from everywhere
  Colour backdrop;   ///< what falls on the background
  float grain;       ///< the camera's noise, grey levels either way
};

Light light_of(Lighting lighting);

/// A display colour, 0..255, as linear light: its square. Shown again by the root, which every machine
/// computes alike.
inline Colour paint(int r, int g, int b) {
  const auto linear = [](int value) {
    const float share = static_cast<float>(value) / 255.0f;
    return share * share;
  };
  return {linear(r), linear(g), linear(b)};
}

/// Lambert's law with light that reaches a little around the edge, as on skin and cloth. `wrap` 0: as on
/// stone.
inline Colour shaded(const Colour& albedo, const Vector& normal, const Light& light, float wrap = 0.35f) {
  const float facing = std::max(0.0f, (dot(normal, light.direction) + wrap) / (1.0f + wrap));
  const float sky = 0.85f - 0.2f * normal.y;  // less light comes from below
  return albedo * (light.ambient * sky + light.key * facing);
}

/// Gloss where the lamp mirrors toward the camera.
inline float gloss(const Vector& normal, const Light& light) {
  const Vector half{light.direction.x * 0.5f, light.direction.y * 0.5f, light.direction.z * 0.5f + 0.5f};
  const float facing = std::max(0.0f, dot(normal, half)) / std::sqrt(dot(half, half));
  const float f4 = facing * facing * facing * facing;
  return f4 * f4 * f4 * f4;
}

}  // namespace morvale::scene
