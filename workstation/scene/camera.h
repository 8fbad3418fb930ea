/// From a painted canvas to the bytes that a camera delivers, and to the scores that a network would give.
#pragma once

#include "scene/scene.h"
#include "scene/shapes.h"

namespace morvale::scene {

/// The canvas as displayed, 8 bits a channel, R first.
std::vector<uint8_t> develop(const Canvas& canvas);

/// Full-range NV21 of an even-sized picture, each chroma pair the mean of its four pixels. `grain`: noise of
/// so many grey levels either way, the same for the same seed.
std::vector<uint8_t> nv21_of(const std::vector<uint8_t>& rgb, int width, int height, float grain,
                             uint32_t seed);

/// See Scene::scores. labels: width x height.
std::vector<float> scores_of(const std::vector<uint8_t>& labels, int width, int height,
                             const NetworkShape& network, uint32_t seed);

}  // namespace morvale::scene
