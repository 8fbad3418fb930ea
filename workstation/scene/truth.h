/// What is true of a painted picture.
#pragma once

#include "scene/scene.h"
#include "scene/shapes.h"

namespace morvale::scene {

/// The label that a sure network gives to a surface.
inline uint8_t label_of(Surface surface) {
  constexpr uint8_t kLabelOf[] = {0, 1, 2, 2, 4};
  return kLabelOf[static_cast<size_t>(surface)];
}

/// `rgb`: the canvas as displayed, three bytes a pixel.
SceneTruth truth_of(const Canvas& canvas, const std::vector<uint8_t>& rgb, int people);

}  // namespace morvale::scene
