/// Paints one person: hair behind, clothes, neck, face, features, hair in front.
#include "scene/people.h"

namespace morvale::scene {
namespace {

/// The painter of one person. Places and sizes are in head units: the origin is the face's centre, y runs
/// down, 1 is the face's half-height.
class Portrait {
 public:
  Portrait(Canvas& canvas, const Looks& looks, const Pose& pose, const Light& light, uint8_t owner)
      : canvas_(canvas),
        looks_(looks),
        pose_(pose),
        light_(light),
        owner_(owner),
        strands_(looks.texture),
        fine_strands_(looks.texture + 9),
        folds_(looks.texture + 3),
        weave_(looks.texture + 4),
        pores_(looks.texture + 5),
        hair_ends_(looks.texture + 6) {}

  void draw() {
    hair_behind();
    body();
    neck();
    face();
    eyes();
    nose_and_mouth();
    if (looks_.glasses) glasses();
    hair_in_front();
  }

 private:
  /// A part of the head: it leans and is wide as the head is.
  Blob on_head(float x, float y, float rx, float ry) const {
    const float s = pose_.unit;
    return {pose_.x + (x + pose_.lean * -y) * s, pose_.y + y * s, rx * s, ry * s, -pose_.lean};
  }
  /// A feature, which the head's turn carries along.
  Blob on_face(float x, float y, float rx, float ry, float relief = 0.2f) const {
    return on_head(x + pose_.turn * relief, y, rx, ry);
  }
  Blob on_trunk(float x, float y, float rx, float ry) const {
    const float s = pose_.unit;
    return {pose_.x + x * s, pose_.y + y * s, rx * s, ry * s};
  }

  /// Flat paint, lit by the whole face's light rather than its own.
  void feature(const Blob& blob, const Colour& colour, float strength = 1) {
    const Colour lit = shaded(colour, {0, 0, 1}, light_);
    fill(canvas_, blob, Surface::kFeature, owner_, [&](const Hit&, float& opacity) {
      opacity *= strength;
      return lit;
    });
  }
  /// Shadow, blush or gloss on what is there, strongest in its middle.
  void tint(const Blob& blob, const Colour& colour, float strength) {
    fill(canvas_, blob, Surface::kUnchanged, owner_, [&](const Hit& hit, float& opacity) {
      opacity = std::max(0.0f, hit.inside) * strength;
      return colour;
    });
  }

  /// Strands, as fine noise along the hair's fall, and a band of gloss across them.
  Colour hair_colour(const Hit& hit) {
    const float strands = strands_.at(hit.u * 17.0f + hit.v * 2.5f, hit.v * 1.6f) * 0.65f +
                          fine_strands_.at(hit.u * 41.0f + hit.v * 4.0f, hit.v * 2.5f) * 0.35f;
    const float band = (hit.v + 0.66f - 0.34f * hit.u * hit.u) / 0.22f;
    const float near = std::max(0.0f, 1.0f - band * band);
    const float shine = near * near * strands * strands * 0.16f;
    return shaded(looks_.hair * (0.55f + 0.9f * strands), hit.normal, light_) + light_.key * shine;
  }
  void hair(const Blob& blob) {
    fill(canvas_, blob, Surface::kHair, owner_, [&](const Hit& hit, float&) { return hair_colour(hit); });
  }

  void hair_behind() {
    switch (looks_.style) {
      case HairStyle::kShort:
        hair(on_head(0, -0.28f, 0.86f, 0.95f));
        break;
      case HairStyle::kBob:
        curtain(0.22f, 0.98f, 0.92f);
        break;
      case HairStyle::kLong:
        curtain(0.62f, 1.00f, 1.35f);
        break;
      case HairStyle::kBun:
        hair(on_head(0.05f, -1.28f, 0.40f, 0.34f));
        hair(on_head(0, -0.28f, 0.87f, 0.96f));
        break;
      case HairStyle::kCurls:
        hair(on_head(0, -0.25f, 1.00f, 1.00f));
        curls(11, 0.58f, 0.92f, 0.93f, 0.29f);
        break;
    }
  }
  /// A round crown, and from it hair that falls to the neck or the shoulders.
  void curtain(float y, float half_width, float half_height) {
    Blob fall = on_head(0, y, half_width, half_height);
    fall.square = true;
    fall.taper = -0.10f;
    hair(fall);
    hair(on_head(0, -0.20f, half_width - 0.02f, 1.02f));
  }
  /// A row of curls over the top of the head; `span` of a full turn: 0.5 is from side to side.
  void curls(int count, float span, float rx, float ry, float size) {
    for (int i = 0; i < count; ++i) {
      const float turn = 0.75f + span * (static_cast<float>(i) / static_cast<float>(count - 1) - 0.5f);
      hair(on_head(rx * wave(turn + 0.25f), -0.25f + ry * wave(turn), size, size));
    }
  }

  Colour cloth(const Hit& hit) {
    const float folds = 0.86f + 0.28f * folds_.at(hit.u * 3.0f + 7.0f, hit.v * 2.0f);
    const float weave = 0.96f + 0.08f * weave_.at(hit.u * 90.0f, hit.v * 130.0f);
    Colour colour = looks_.cloth;
    if (looks_.clothing == Clothing::kStripes) {
      const float row = hit.v * 11.0f + 0.5f * hit.u * hit.u;
      const float edge = std::clamp(std::abs(row - std::floor(row) - 0.5f) * 14.0f - 3.2f, 0.0f, 1.0f);
      colour = mix(looks_.cloth, looks_.trim, edge * 0.85f);
    }
    return shaded(colour * (folds * weave), hit.normal, light_);
  }
  void body() {
    Blob trunk = on_trunk(0, 4.05f, 1.95f, 2.85f);
    trunk.square = trunk.endless = true;
    fill(canvas_, trunk, Surface::kBody, owner_, [&](const Hit& hit, float&) { return cloth(hit); });
    if (looks_.clothing == Clothing::kShirt) {
      const Colour dark = looks_.cloth * 0.35f;
      for (int i = 0; i < 8; ++i) {
        const float y = 1.95f + 0.42f * static_cast<float>(i);
        tint(on_trunk(0.02f, y + 0.02f, 0.065f, 0.065f), dark, 0.9f);
        tint(on_trunk(0, y, 0.05f, 0.05f), shaded(looks_.trim, {0, 0, 1}, light_), 1.6f);
      }
    }
  }
  void neck() {
    // The collar's ring first, then the neck in it, darker where the chin keeps the light off.
    const Colour ring = looks_.clothing == Clothing::kPlain ? looks_.cloth * 0.62f : looks_.trim;
    fill(canvas_, on_trunk(0, 1.24f, 0.58f, 0.40f), Surface::kBody, owner_,
         [&](const Hit& hit, float&) { return shaded(ring, hit.normal, light_); });
    Blob neck = on_trunk(0, 0.98f, 0.40f, 0.58f);
    neck.square = true;
    const auto skin = [&](const Hit& hit, float&) {
      const float shade = std::clamp(0.55f + 0.75f * (hit.v - 0.05f), 0.52f, 0.95f);
      return shaded(looks_.skin * shade, {hit.normal.x, 0, hit.normal.z}, light_);
    };
    fill(canvas_, on_trunk(0, 1.22f, 0.48f, 0.32f), Surface::kBody, owner_, skin);
    fill(canvas_, neck, Surface::kBody, owner_, skin);
  }

  /// Skin lets some of the light through: the edge of its shadow is redder.
  Colour skin_colour(const Hit& hit) {
    const float pores = 0.97f + 0.06f * pores_.at(hit.u * 34.0f, hit.v * 44.0f);
    const float facing = dot(hit.normal, light_.direction);
    const float edge = std::max(0.0f, 1.0f - std::abs(facing - 0.12f) * 3.0f);
    const Colour lit = shaded(looks_.skin * pores, hit.normal, light_);
    return lit * Colour{1.0f + 0.05f * edge, 1.0f - 0.05f * edge, 1.0f - 0.06f * edge} +
           light_.key * (0.05f * gloss(hit.normal, light_));
  }
  void face() {
    const auto skin = [&](const Hit& hit, float&) { return skin_colour(hit); };
    if (looks_.style != HairStyle::kLong && looks_.style != HairStyle::kBob) {
      for (const float side : {-1.0f, 1.0f}) {
        const Blob ear = on_head(side * looks_.face_width - pose_.turn * 0.06f, 0.06f, 0.11f, 0.21f);
        fill(canvas_, ear, Surface::kSkin, owner_, skin);
        tint(on_head(side * (looks_.face_width + 0.02f) - pose_.turn * 0.06f, 0.06f, 0.06f, 0.13f),
             shaded(looks_.skin * 0.45f, {0, 0, 1}, light_), 0.5f);
      }
    }
    Blob head = on_head(0, 0, looks_.face_width, 1.0f);
    head.taper = 0.21f;
    fill(canvas_, head, Surface::kSkin, owner_, skin);
    const Colour blush = shaded(looks_.skin * Colour{1.0f, 0.62f, 0.58f}, {0, 0, 1}, light_);
    for (const float side : {-1.0f, 1.0f}) tint(on_face(side * 0.40f, 0.26f, 0.26f, 0.2f), blush, 0.38f);
  }

  void eyes() {
    const float open = pose_.eyes;
    const Colour shadow = shaded(looks_.skin * 0.5f, {0, 0, 1}, light_);
    for (const float side : {-1.0f, 1.0f}) {
      const float x = side * 0.31f;
      tint(on_face(x, -0.10f, 0.22f, 0.16f), shadow, 0.45f);  // the socket
      if (open > 0.15f) {
        feature(on_face(x, -0.06f, 0.135f, 0.078f * open), paint(238, 236, 230));
        feature(on_face(x + pose_.turn * 0.03f, -0.06f, 0.068f, 0.075f * open), looks_.iris);
        feature(on_face(x + pose_.turn * 0.03f, -0.06f, 0.034f, 0.036f * open), paint(12, 10, 10));
        feature(on_face(x + 0.022f + pose_.turn * 0.03f, -0.085f, 0.016f, 0.016f), paint(255, 255, 255));
      }
      Blob lid = on_face(x, -0.06f - 0.075f * open, 0.16f, 0.026f);
      lid.bend = -1.6f * open;
      feature(lid, looks_.hair * 0.45f, 0.85f);
      Blob brow = on_face(x + side * 0.02f, -0.29f, 0.19f, 0.042f);
      brow.bend = -0.9f;
      feature(brow, looks_.hair * 0.8f, 0.85f);
    }
  }
  void nose_and_mouth() {
    const Colour dark = shaded(looks_.skin * 0.45f, {0, 0, 1}, light_);
    const float shadow_side = light_.direction.x < 0 ? 1.0f : -1.0f;
    tint(on_face(shadow_side * 0.07f, 0.10f, 0.09f, 0.28f, 0.24f), dark, 0.26f);
    tint(on_face(0, 0.33f, 0.16f, 0.07f, 0.26f), dark, 0.45f);
    tint(on_face(-shadow_side * 0.02f, 0.14f, 0.055f, 0.20f, 0.27f), light_.key, 0.10f);
    for (const float side : {-1.0f, 1.0f})
      tint(on_face(side * 0.06f, 0.315f, 0.035f, 0.025f, 0.26f), dark * 0.4f, 0.8f);

    const Colour lips = looks_.skin * Colour{0.74f, 0.42f, 0.42f};
    Blob upper = on_face(0, 0.56f, 0.23f, 0.05f), lower = on_face(0, 0.61f, 0.19f, 0.065f);
    Blob gap = on_face(0, 0.585f, 0.215f, 0.016f);
    upper.bend = 0.7f;  // the corners of the mouth are lifted: a friendly face
    lower.bend = 0.55f;
    gap.bend = 2.2f;
    feature(lower, lips * 1.12f, 0.9f);
    feature(upper, lips, 0.9f);
    feature(gap, lips * 0.25f, 0.75f);
    tint(on_face(0, 0.73f, 0.17f, 0.05f), dark, 0.3f);
    tint(on_face(-0.03f, 0.625f, 0.07f, 0.02f), light_.key, 0.14f);
  }
  void glasses() {
    const Colour frame = paint(30, 28, 30);
    for (const float side : {-1.0f, 1.0f}) {
      const Blob lens = on_face(side * 0.31f, -0.05f, 0.235f, 0.20f);
      const Colour lit = shaded(frame, {0, 0, 1}, light_);
      fill(canvas_, lens, Surface::kFeature, owner_, [&](const Hit& hit, float& opacity) {
        opacity *= std::clamp((0.30f - hit.inside) * 8.0f, 0.0f, 1.0f);
        return lit;
      });
    }
    feature(on_face(0, -0.09f, 0.10f, 0.022f), frame);
  }

  /// The hair over the forehead: what of the cap lies above the hairline, which starts at the parting and
  /// falls to the temples.
  void hair_in_front() {
    Blob cap = on_head(0, -0.20f, looks_.face_width + 0.10f, 0.98f);
    const bool fringe = looks_.style == HairStyle::kBob;
    const float unit = pose_.unit;
    fill(canvas_, cap, Surface::kHair, owner_, [&](const Hit& hit, float& opacity) {
      const float off = hit.u - looks_.parting;
      const float ends = 0.10f * (hair_ends_.at(hit.u * 13.0f, 3.0f) - 0.5f);
      const float line =
          ends + (fringe ? -0.33f + 0.55f * hit.u * hit.u * hit.u * hit.u : -0.56f + 0.62f * off * off);
      opacity *= std::clamp((line - hit.v) * unit + 0.5f, 0.0f, 1.0f);
      return opacity > 0 ? hair_colour(hit) : Colour{};
    });
    if (looks_.style == HairStyle::kCurls) {
      curls(9, 0.48f, 0.80f, 0.80f, 0.23f);
      curls(6, 0.32f, 0.62f, 0.60f, 0.21f);
    }
  }

  Canvas& canvas_;
  const Looks& looks_;
  const Pose& pose_;
  const Light& light_;
  uint8_t owner_;
  Noise strands_, fine_strands_, folds_, weave_, pores_, hair_ends_;
};

}  // namespace

void draw_person(Canvas& canvas, const Looks& looks, const Pose& pose, const Light& light, uint8_t owner) {
  Portrait(canvas, looks, pose, light, owner).draw();
}

}  // namespace morvale::scene
