/// Who is in a scene, and where they are at a time.
#pragma once

#include "scene/light.h"
#include "scene/random.h"
#include "scene/scene.h"

namespace morvale::scene {

enum class HairStyle { kShort, kBob, kLong, kBun, kCurls };
enum class Clothing { kPlain, kStripes, kShirt };

/// What stays: the looks of a person.
struct Looks {
  Colour skin, hair, cloth, trim, iris;
  HairStyle style;
  Clothing clothing;
  float parting;     ///< where the hair parts, half-widths of the face
  float face_width;  ///< half-width of the face, in its half-heights
  bool glasses;
  uint32_t texture;  ///< seed of the hair's strands
};

/// What moves. The unit of a head is its face's half-height.
struct Pose {
  float x, y, unit;  ///< the face's centre and half-height, pixels
  float lean;        ///< of the head, columns a row
  float turn;        ///< -1 to the left .. 1 to the right
  float eyes;        ///< 1 open .. 0 shut
};

/// Person `index` of a scene. People of one scene differ in skin, hair and clothes.
Looks looks_of(const SceneOptions& options, int index);
Pose pose_at(const SceneOptions& options, int index, int frame);

/// Paints a person, head over clothes over what is there.
void draw_person(Canvas& canvas, const Looks& looks, const Pose& pose, const Light& light, uint8_t owner);

/// Paints the background of the scene over whatever is there.
void draw_background(Canvas& canvas, uint64_t seed, const Light& light);

}  // namespace morvale::scene
