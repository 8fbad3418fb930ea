#include "scene/scene.h"

#include <algorithm>
#include <thread>

#include "scene/bands.h"
#include "scene/camera.h"
#include "scene/people.h"
#include "scene/truth.h"

namespace morvale::scene {
namespace {

/// Noise of its own for every frame and purpose.
uint32_t noise_seed(const SceneOptions& options, int index, uint64_t purpose) {
  return static_cast<uint32_t>(Random(options.seed + static_cast<uint64_t>(index) * 65537u + purpose).next());
}

/// Rows of a picture on their way from paint to bytes.
struct Rows {
  Rows(const SceneOptions& options, int most_rows)
      : canvas(options.width, options.height, most_rows), rgb(3 * canvas.light.size()) {}
  Canvas canvas;
  std::vector<uint8_t> rgb;
};

/// Few enough to stay in a core's own cache, and even: chroma belongs to two rows.
int rows_at_a_time(int width) { return std::max(2, 32768 / width & ~1); }

int worker_count() {
  constexpr unsigned kMost = 8;  // what is done in turns keeps more of them waiting
  return static_cast<int>(std::clamp(std::thread::hardware_concurrency(), 1u, kMost));
}

size_t pixels_of(const SceneOptions& options) {
  return static_cast<size_t>(options.width) * static_cast<size_t>(options.height);
}

}  // namespace

struct Scene::Parts {
  explicit Parts(const SceneOptions& given)
      : options(given),
        light(light_of(given.lighting)),
        background(pixels_of(given)),
        workers(static_cast<size_t>(worker_count()), Rows(given, rows_at_a_time(given.width))) {
    for (int i = 0; i < options.people; ++i) looks.push_back(looks_of(options, i));
    in_bands([this](Rows& rows, const Band& band, Turns&) {
      rows.canvas.begin(band.top, band.rows, behind(band));
      draw_background(rows.canvas, options.seed, light);
      std::copy_n(rows.canvas.light.begin(), rows.canvas.index(0, rows.canvas.bottom()), behind(band));
    });
  }

  template <class Work>
  void in_bands(Work work) {
    share_out(workers, options.height, rows_at_a_time(options.width), work);
  }

  Colour* behind(const Band& band) {
    return background.data() + static_cast<size_t>(band.top) * static_cast<size_t>(options.width);
  }

  SceneOptions options;
  Light light;
  std::vector<Colour> background;
  std::vector<Looks> looks;
  std::vector<Rows> workers;
};

Scene::Scene(const SceneOptions& options) : parts_(std::make_unique<Parts>(options)) {}
Scene::~Scene() = default;

SceneFrame Scene::frame(int index) const {
  const SceneOptions& options = parts_->options;
  SceneFrame frame;
  frame.nv21.resize(pixels_of(options) * 3 / 2);
  frame.labels.resize(pixels_of(options));
  std::vector<Pose> poses;
  for (int i = 0; i < options.people; ++i) poses.push_back(pose_at(options, i, index));
  TruthCounter truth(options.width, options.height, options.people);
  const uint32_t seed = noise_seed(options, index, 101);
  parts_->in_bands([&](Rows& rows, const Band& band, Turns& turns) {
    Canvas& canvas = rows.canvas;
    canvas.begin(band.top, band.rows, parts_->behind(band));
    for (size_t i = 0; i < poses.size(); ++i)
      draw_person(canvas, parts_->looks[i], poses[i], parts_->light, static_cast<uint8_t>(i));
    develop(canvas, rows.rgb);
    write_nv21(canvas, rows.rgb, parts_->light.grain, seed, frame.nv21);
    const auto end = canvas.surface.begin() + static_cast<std::ptrdiff_t>(canvas.index(0, canvas.bottom()));
    std::transform(canvas.surface.begin(), end, frame.labels.begin() + band.top * options.width, label_of);
    turns.wait_for(band);
    truth.add(canvas, rows.rgb);  // sums of fractions: another order would give other last digits
    turns.pass_on();
  });
  frame.truth = truth.truth();
  return frame;
}

std::vector<float> Scene::scores(const SceneFrame& frame, int index, const NetworkShape& network) const {
  const SceneOptions& options = parts_->options;
  return scores_of(frame.labels, options.width, options.height, network, noise_seed(options, index, 202));
}

}  // namespace morvale::scene
