/// What is true of a painted picture.
#pragma once

#include <array>
#include <vector>

#include "scene/scene.h"
#include "scene/shapes.h"

namespace morvale::scene {

/// The label that a sure network gives to a surface.
inline uint8_t label_of(Surface surface) {
  constexpr uint8_t kLabelOf[] = {0, 1, 2, 2, 4};
  return kLabelOf[static_cast<size_t>(surface)];
}

/// Gathers what is true of a picture, from its rows in their order.
class TruthCounter {
 public:
  TruthCounter(int width, int height, int people);
  ~TruthCounter();
  TruthCounter(const TruthCounter&) = delete;
  TruthCounter& operator=(const TruthCounter&) = delete;

  /// The canvas's rows, which follow those before. `rgb`: the rows as displayed, three bytes a pixel.
  void add(const Canvas& canvas, const std::vector<uint8_t>& rgb);

  SceneTruth truth() const;

 private:
  struct PersonPixels;

  struct Run;
  void add_run(const Run& run);
  void add_head(const Run& run);

  int width_, height_;
  std::vector<PersonPixels> people_;
  int64_t person_ = 0, body_ = 0;  ///< pixels
  std::array<std::array<int, kTruthColumns>, kTruthRows> heads_{};
};

}  // namespace morvale::scene
