#include "scene/light.h"

namespace morvale::scene {

Light light_of(Lighting lighting) {
  switch (lighting) {
    case Lighting::kDim:
      return {
          {-0.55f, -0.45f, 0.70f}, {0.34f, 0.33f, 0.31f}, {0.105f, 0.11f, 0.125f}, {0.17f, 0.18f, 0.21f}, 5};
    case Lighting::kWarm:
      return {{0.60f, -0.35f, 0.72f}, {1.00f, 0.72f, 0.46f}, {0.30f, 0.22f, 0.16f}, {0.72f, 0.50f, 0.33f}, 2};
    case Lighting::kBacklit:
      return {{0.10f, -0.75f, 0.65f}, {0.38f, 0.38f, 0.39f}, {0.22f, 0.23f, 0.25f}, {1.60f, 1.58f, 1.50f}, 2};
    default:
      return {
          {-0.48f, -0.50f, 0.72f}, {1.02f, 0.97f, 0.90f}, {0.30f, 0.31f, 0.33f}, {0.85f, 0.87f, 0.90f}, 2};
  }
}

}  // namespace morvale::scene
