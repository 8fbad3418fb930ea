/// From a painted canvas to the bytes that a camera delivers, and to the scores that a network would give.
#pragma once

#include "scene/scene.h"
#include "scene/shapes.h"

namespace morvale::scene {

/// The canvas's rows as displayed, 8 bits a channel, R first.
void develop(const Canvas& canvas, std::vector<uint8_t>& rgb);

/// Writes the canvas's rows, which begin and end between two chroma rows, into the full-range NV21 frame
/// `nv21`, each chroma pair the mean of its four pixels. `rgb`: the rows, developed. `grain`: noise of so
/// many grey levels either way, the same for the same seed.
void write_nv21(const Canvas& canvas, const std::vector<uint8_t>& rgb, float grain, uint32_t seed,
                std::vector<uint8_t>& nv21);

/// See Scene::scores. labels: width x height.
std::vector<float> scores_of(const std::vector<uint8_t>& labels, int width, int height,
                             const NetworkShape& network, uint32_t seed);

}  // namespace morvale::scene
