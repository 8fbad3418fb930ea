/// The looks of a scene's people, and how they move.
#include "scene/people.h"

#include <iterator>

namespace morvale::scene {
namespace {

constexpr float kFramesPerSecond = 30;

/// Every person has chances of their own, so that a third one changes nothing about the first two.
Random chances(const SceneOptions& options, int index, uint64_t purpose) {
  return Random(options.seed * 1000003u + static_cast<uint64_t>(index) * 7919u + purpose);
}

const Colour kSkins[] = {paint(243, 208, 184), paint(224, 176, 146), paint(203, 148, 112),
                         paint(166, 112, 78),  paint(128, 82, 56),   paint(98, 63, 45)};
const Colour kHairs[] = {paint(40, 30, 26),   paint(74, 48, 32),  paint(122, 76, 42),
                         paint(196, 152, 92), paint(132, 58, 34), paint(150, 146, 142)};
const Colour kCloths[] = {paint(52, 92, 132),  paint(158, 62, 62),  paint(62, 118, 100),
                          paint(198, 158, 72), paint(104, 84, 132), paint(88, 98, 108)};
const Colour kTrims[] = {paint(236, 232, 222), paint(36, 44, 60), paint(222, 196, 150)};
const Colour kIrises[] = {paint(86, 56, 34), paint(74, 104, 120), paint(84, 98, 60)};

/// Where person `index` stands in a table of `size` entries: from a start that the seed chooses, in steps
/// that do not meet an entry twice among a scene's people.
size_t place(const SceneOptions& options, uint64_t purpose, int index, int step, size_t size) {
  Random random(options.seed * 31u + purpose);
  return static_cast<size_t>(random.below(static_cast<int>(size)) + index * step) % size;
}

/// The half-height of a face. Several people stand further off.
float head_unit(const SceneOptions& options) {
  constexpr float kShare[kMostPeople] = {0.265f, 0.210f, 0.170f};
  const float share = kShare[options.people - 1] * (options.near ? 1.0f : 0.85f);
  const float lane = static_cast<float>(options.width) / static_cast<float>(options.people);
  return std::min(share * static_cast<float>(options.height), 0.36f * lane);
}

}  // namespace

Looks looks_of(const SceneOptions& options, int index) {
  Random random = chances(options, index, 11);
  Looks looks;
  constexpr size_t kDarkSkins = 3, kDarkHairs = 2;  // from here on, up to here
  const size_t skin = place(options, 1, index, 2, std::size(kSkins));
  looks.skin = kSkins[skin];
  looks.hair = kHairs[place(options, 2, index, 5, skin < kDarkSkins ? std::size(kHairs) : kDarkHairs)];
  looks.cloth = kCloths[place(options, 3, index, 1, std::size(kCloths))];
  looks.trim = kTrims[random.below(std::size(kTrims))];
  looks.iris = kIrises[random.below(std::size(kIrises))];
  looks.style = static_cast<HairStyle>((Random(options.seed).below(5) + index * 2) % 5);
  looks.clothing = static_cast<Clothing>(random.below(3));
  looks.parting = random.between(-0.35f, 0.35f);
  looks.face_width = random.between(0.70f, 0.78f);
  looks.glasses = random.below(4) == 0;
  looks.texture = static_cast<uint32_t>(random.next());
  return looks;
}

Pose pose_at(const SceneOptions& options, int index, int frame) {
  Random random = chances(options, index, 23);
  const float lane = static_cast<float>(options.width) / static_cast<float>(options.people);
  const float time = static_cast<float>(frame) / kFramesPerSecond;
  const float phase = random.unit();
  Pose pose;
  pose.unit = head_unit(options) * random.between(0.94f, 1.04f);
  pose.x = lane * (static_cast<float>(index) + 0.5f) + random.between(-0.04f, 0.04f) * lane;
  pose.y = static_cast<float>(options.height) * random.between(0.45f, 0.49f);
  pose.turn = random.between(-0.35f, 0.35f);
  pose.lean = random.between(-0.06f, 0.06f);
  if (options.motion == Motion::kSway) {
    pose.x += pose.unit * 0.18f * wave(time / 3.1f + phase);
    pose.y += pose.unit * 0.05f * wave(time / 1.9f + phase);
    pose.lean += 0.09f * wave(time / 3.1f + phase + 0.1f);
    pose.turn += 0.45f * wave(time / 4.3f + phase);
  } else if (options.motion == Motion::kWalk) {
    const float room = std::max(0.0f, 0.5f * lane - 1.1f * pose.unit);
    pose.x += room * wave(time / 6.0f + phase);
    pose.y += pose.unit * 0.06f * wave(time / 0.6f + phase);
    pose.turn = 0.7f * wave(time / 6.0f + phase + 0.25f);  // toward where the way goes
  }
  const float since_blink = time / 2.7f + phase - std::floor(time / 2.7f + phase);
  pose.eyes = std::min(1.0f, std::abs(since_blink - 0.05f) * 20.0f);
  return pose;
}

}  // namespace morvale::scene
