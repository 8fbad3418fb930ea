/// What stands behind the people: a plastered wall, and out of focus before it lights, a window or shelves.
#include "scene/people.h"

namespace morvale::scene {
namespace {

struct Palette {
  Colour top, bottom, accent;
};
const Palette kPalettes[] = {{paint(150, 170, 176), paint(92, 108, 116), paint(244, 226, 180)},
                             {paint(186, 168, 146), paint(122, 102, 86), paint(255, 214, 150)},
                             {paint(128, 146, 122), paint(72, 88, 74), paint(232, 236, 178)},
                             {paint(158, 148, 170), paint(90, 82, 106), paint(255, 196, 176)}};

void wall(Canvas& canvas, const Palette& palette, uint32_t texture) {
  const float unit = 1.0f / static_cast<float>(canvas.height);
  RoughNoise coarse(texture), fine(texture + 7);
  const float aspect = static_cast<float>(canvas.width) * unit;
  for (int y = canvas.top; y < canvas.bottom(); ++y) {
    for (int x = 0; x < canvas.width; ++x) {
      const float u = static_cast<float>(x) * unit, v = static_cast<float>(y) * unit;
      const float plaster =
          0.84f + 0.20f * coarse.at(u * 5.0f, v * 5.0f) + 0.12f * fine.at(u * 42.0f, v * 42.0f);
      const float dx = (u - 0.5f * aspect) / aspect, dy = v - 0.5f;
      const float vignette = 1.0f - 0.75f * (dx * dx + dy * dy);
      canvas.light[canvas.index(x, y)] = mix(palette.top, palette.bottom, v) * (plaster * vignette);
    }
  }
}

/// Paints a soft shape over the wall.
void glow(Canvas& canvas, const Blob& blob, const Colour& colour, float strength) {
  fill(canvas, blob, Surface::kUnchanged, kNobody, [&](const Hit&, float& opacity) {
    opacity *= strength;
    return colour;
  });
}

void lights(Canvas& canvas, const Palette& palette, Random& random) {
  const auto width = static_cast<float>(canvas.width), height = static_cast<float>(canvas.height);
  for (int i = 0; i < 16; ++i) {
    const float radius = height * random.between(0.03f, 0.10f);
    Blob disc{width * random.unit(), height * random.between(-0.05f, 0.75f), radius, radius};
    disc.softness = radius * 0.25f;
    const float brightness = random.between(0.6f, 1.1f);  // drawn apart: arguments have no order
    const float strength = random.between(0.12f, 0.38f);
    glow(canvas, disc, palette.accent * brightness, strength);
  }
}

void window(Canvas& canvas, const Palette& palette, Random& random) {
  const auto width = static_cast<float>(canvas.width), height = static_cast<float>(canvas.height);
  const float x =
      width * (random.below(2) == 0 ? random.between(0.10f, 0.22f) : random.between(0.78f, 0.90f));
  for (int row = 0; row < 2; ++row) {
    for (int column = 0; column < 2; ++column) {
      Blob pane{x + height * 0.17f * (static_cast<float>(column) - 0.5f),
                height * (0.18f + 0.27f * static_cast<float>(row)), height * 0.075f, height * 0.12f};
      pane.square = true;
      pane.softness = height * 0.02f;
      glow(canvas, pane, mix(palette.accent, paint(226, 240, 255), 0.6f), 0.85f);
    }
  }
}

void shelves(Canvas& canvas, Random& random) {
  const auto width = static_cast<float>(canvas.width), height = static_cast<float>(canvas.height);
  for (const float foot : {0.30f, 0.62f, 0.94f}) {
    for (float x = random.unit() * 0.03f * height; x < width;) {
      const float thick = height * random.between(0.018f, 0.042f),
                  tall = height * random.between(0.10f, 0.13f);
      Blob book{x + thick, height * foot - tall, thick * 0.96f, tall};
      book.square = true;
      book.softness = height * 0.012f;
      const Colour cover{random.between(0.05f, 0.40f), random.between(0.05f, 0.30f),
                         random.between(0.05f, 0.30f)};
      if (random.below(7) != 0) glow(canvas, book, cover, 0.8f);
      x += 2 * thick;
    }
    Blob board{width * 0.5f, height * (foot + 0.012f), width, height * 0.012f};
    board.square = true;
    board.softness = height * 0.01f;
    glow(canvas, board, paint(84, 62, 46), 0.9f);
  }
}

}  // namespace

void draw_background(Canvas& canvas, uint64_t seed, const Light& light) {
  Random random(seed * 2654435761u + 5);
  const Palette& palette = kPalettes[random.below(4)];
  wall(canvas, palette, static_cast<uint32_t>(random.next()));
  switch (random.below(3)) {
    case 0:
      lights(canvas, palette, random);
      break;
    case 1:
      window(canvas, palette, random);
      break;
    default:
      shelves(canvas, random);
  }
  const size_t pixels = canvas.index(0, canvas.bottom());
  for (size_t i = 0; i < pixels; ++i) canvas.light[i] = canvas.light[i] * light.backdrop;
}

}  // namespace morvale::scene
