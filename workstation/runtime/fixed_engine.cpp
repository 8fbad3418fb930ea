#include <map>
#include <stdexcept>
#include <vector>

#include <morvale/core/globals.h>
#include "runtime/engine.h"

namespace morvale::runtime {
namespace {

/// Scores of a made-up portrait on a side x side map: background, a body below, a face in the middle with
/// hair around it. Sure scores, so that every stage behind the network has its full work.
std::vector<float> portrait(int32_t side) {
  const auto inside = [&](int32_t x, int32_t y, double cx, double cy, double rx, double ry) {
    const double dx = (x + 0.5) / side - cx, dy = (y + 0.5) / side - cy;
    return dx * dx / (rx * rx) + dy * dy / (ry * ry) < 1.0;
  };
  std::vector<float> scores;
  for (int32_t y = 0; y < side; ++y) {
    for (int32_t x = 0; x < side; ++x) {
      size_t label = 0;
      if (inside(x, y, 0.5, 0.85, 0.32, 0.35)) label = 4;
      if (inside(x, y, 0.5, 0.33, 0.17, 0.22)) label = 1;
      if (inside(x, y, 0.5, 0.37, 0.13, 0.17)) label = 2;
      float cell[morvale::kLabels] = {-6, -6, -6, -9, -6};
      cell[label] = 8;
      scores.insert(scores.end(), cell, cell + morvale::kLabels);
    }
  }
  return scores;
}

class FixedEngine final : public Engine {
 public:
  /// Both models' scores are made here, so that no run has to.
  FixedEngine() {
    for (const int32_t side : {32, 64}) scores_[side] = portrait(side);
  }

  void open(const std::filesystem::path&, const std::string&, const std::string&) override {}

  vexa::DataBuffer run(const vexa::DataBuffer& input) override {
    const auto scores = scores_.find(input.shape.size() == 4 ? input.shape[1] / 4 : 0);
    if (scores == scores_.end()) throw std::runtime_error("the input fits neither model");
    return {scores->second.data(), {1, scores->first, scores->first, morvale::kLabels}};
  }

 private:
  std::map<int32_t, std::vector<float>> scores_;  ///< by side of the map
};

}  // namespace

std::unique_ptr<Engine> make_fixed_engine() { return std::make_unique<FixedEngine>(); }

}  // namespace morvale::runtime
