/// Made-up camera scenes: shaded heads with hair and clothes in front of textured backgrounds, and beside
/// every picture the truth about it. Needs no network, no photograph and no library; the same options give
/// the same bytes on every machine (scene/random.h says how).
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <morvale/core/records.h>

namespace morvale::scene {

enum class Lighting { kDay, kDim, kWarm, kBacklit };
enum class Motion { kStill, kSway, kWalk };

constexpr int kMostPeople = 3;

struct SceneOptions {
  uint64_t seed = 1;
  int width = 640, height = 480;  ///< even
  int people = 1;                 ///< 1..kMostPeople, left to right
  bool near = true;               ///< as close as a front camera sees people; otherwise a few steps off
  Lighting lighting = Lighting::kDay;
  Motion motion = Motion::kSway;
};

/// The square that a network sees: `input` pixels a side, `output` cells a side.
struct NetworkShape {
  int input = 256, output = 64;
};

/// What a person's part of a picture truly is. Boxes in frame pixels around what is visible; all 0 of
/// nothing.
struct PersonTruth {
  FaceRect face;    ///< skin and features of the face
  FaceRect head;    ///< face and hair
  FaceRect person;  ///< everything
  /// The mean colour of the face's skin before the camera's noise, eyes, brows and lips left out: H in
  /// degrees, below 0 for reds that lean to magenta; S and V 0..255.
  std::array<double, 3> hsv;
};

constexpr int kTruthColumns = 19, kTruthRows = 15;

struct SceneTruth {
  double person_share;  ///< per cent of the picture
  double body_share;    ///< the same without face and hair
  std::vector<PersonTruth> people;
  /// Where heads are: '1' for a part of the picture that is at least half face or hair.
  std::array<std::string, kTruthRows> grid;
};

struct SceneFrame {
  std::vector<uint8_t> nv21;    ///< width x height, packed
  std::vector<uint8_t> labels;  ///< width x height: 0 background, 1 hair, 2 face, 4 body
  SceneTruth truth;
};

/// One scene: the same people in front of the same background, frame after frame.
class Scene {
 public:
  explicit Scene(const SceneOptions& options);
  ~Scene();
  Scene(const Scene&) = delete;
  Scene& operator=(const Scene&) = delete;

  /// Frame `index` at 30 frames a second. Any order, one at a time: it is drawn by as many threads as there
  /// are processors, up to eight, and how many there are changes no byte.
  SceneFrame frame(int index) const;

  /// The scores that a sure network would give for the frame: output x output cells of five, cell by cell. A
  /// label has -7 where it is not and +8 where it fills the cell and half a cell around it; label 3, which no
  /// scene has, stays at -9; a little noise lies over all. The square holds the shrunk picture, its mirror
  /// below, and nothing right of a portrait picture.
  std::vector<float> scores(const SceneFrame& frame, int index, const NetworkShape& network) const;

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

}  // namespace morvale::scene
