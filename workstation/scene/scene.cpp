#include "scene/scene.h"

#include <algorithm>

#include "scene/camera.h"
#include "scene/people.h"
#include "scene/truth.h"

namespace morvale::scene {
namespace {

/// Noise of its own for every frame and purpose.
uint32_t noise_seed(const SceneOptions& options, int index, uint64_t purpose) {
  return static_cast<uint32_t>(Random(options.seed + static_cast<uint64_t>(index) * 65537u + purpose).next());
}

}  // namespace

struct Scene::Parts {
  explicit Parts(const SceneOptions& given)
      : options(given), light(light_of(given.lighting)), background(given.width, given.height) {
    draw_background(background, options.seed, light);
    for (int i = 0; i < options.people; ++i) looks.push_back(looks_of(options, i));
  }

  SceneOptions options;
  Light light;
  Canvas background;
  std::vector<Looks> looks;
};

Scene::Scene(const SceneOptions& options) : parts_(std::make_unique<Parts>(options)) {}
Scene::~Scene() = default;

SceneFrame Scene::frame(int index) const {
  const SceneOptions& options = parts_->options;
  Canvas canvas = parts_->background;
  for (int i = 0; i < options.people; ++i) {
    draw_person(canvas, parts_->looks[static_cast<size_t>(i)], pose_at(options, i, index), parts_->light,
                static_cast<uint8_t>(i));
  }
  const std::vector<uint8_t> rgb = develop(canvas);
  SceneFrame frame;
  frame.nv21 =
      nv21_of(rgb, options.width, options.height, parts_->light.grain, noise_seed(options, index, 101));
  frame.labels.resize(canvas.surface.size());
  std::transform(canvas.surface.begin(), canvas.surface.end(), frame.labels.begin(), label_of);
  frame.truth = truth_of(canvas, rgb, options.people);
  return frame;
}

std::vector<float> Scene::scores(const SceneFrame& frame, int index, const NetworkShape& network) const {
  const SceneOptions& options = parts_->options;
  return scores_of(frame.labels, options.width, options.height, network, noise_seed(options, index, 202));
}

}  // namespace morvale::scene
