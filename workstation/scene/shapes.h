/// The one solid of which everything is built, and the picture that it is drawn into.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace morvale::scene {

struct Vector {
  float x, y, z;  ///< right, down, toward the camera
};
inline float dot(const Vector& a, const Vector& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

/// Linear light: twice as much is twice as bright.
struct Colour {
  float r, g, b;
};
inline Colour operator*(const Colour& c, float f) { return {c.r * f, c.g * f, c.b * f}; }
inline Colour operator*(const Colour& a, const Colour& b) { return {a.r * b.r, a.g * b.g, a.b * b.b}; }
inline Colour operator+(const Colour& a, const Colour& b) { return {a.r + b.r, a.g + b.g, a.b + b.b}; }
inline Colour mix(const Colour& from, const Colour& to, float part) {
  return from * (1.0f - part) + to * part;
}

/// What one pixel's centre meets of a solid.
struct Hit {
  float cover;    ///< how much of the pixel it covers, 0..1
  float u, v;     ///< where, in half-widths and half-heights from its centre
  float inside;   ///< 1 at the centre, 0 at the outline, negative outside
  Vector normal;  ///< of the surface there, length 1
};

/// An ellipsoid seen from the front, with the few deformations that make it a head, a lip or a chest.
struct Blob {
  float cx, cy, rx, ry;  ///< centre and half-axes, pixels
  float lean = 0;        ///< columns to the right for each row down
  float taper = 0;       ///< how much narrower it is at its lower end, share of the width
  float bend = 0;        ///< how far its ends are lifted, in half-heights
  float softness = 1;    ///< width of the outline's fade, pixels
  bool square = false;   ///< corners fuller than an ellipse's
  bool endless = false;  ///< goes on downwards without an end
  Hit at(float x, float y) const;

  /// The pixels that it can touch within 0..size-1: columns and rows, last one excluded.
  struct Range {
    int begin, end;
  };
  Range columns(int size) const;
  Range rows(int size) const;
};

/// What is seen at a pixel.
enum class Surface : uint8_t {
  kBackground,
  kHair,
  kSkin,      ///< the skin of a face
  kFeature,   ///< eye, brow or lip: face, but not of the skin's colour
  kBody,      ///< neck and clothes
  kUnchanged  ///< for paint only: shadow and gloss on what is there
};

constexpr uint8_t kNobody = 255;

/// A picture while it is painted: light, and beside it what is seen and of whom.
struct Canvas {
  Canvas(int width_, int height_);

  int width, height;
  std::vector<Colour> light;
  std::vector<Surface> surface;
  std::vector<uint8_t> owner;  ///< a person's index, or kNobody

  size_t index(int x, int y) const {
    return static_cast<size_t>(y) * static_cast<size_t>(width) + static_cast<size_t>(x);
  }
};

/// Paints a solid over the canvas. paint(hit, opacity) gives the colour at a hit and may lower the opacity,
/// which comes in as the cover.
template <class Paint>
void fill(Canvas& canvas, const Blob& blob, Surface surface, uint8_t owner, Paint paint) {
  const Blob::Range columns = blob.columns(canvas.width), rows = blob.rows(canvas.height);
  for (int y = rows.begin; y < rows.end; ++y) {
    for (int x = columns.begin; x < columns.end; ++x) {
      const Hit hit = blob.at(static_cast<float>(x) + 0.5f, static_cast<float>(y) + 0.5f);
      float opacity = hit.cover;
      if (opacity <= 0) continue;
      const Colour colour = paint(hit, opacity);
      const size_t i = canvas.index(x, y);
      canvas.light[i] = mix(canvas.light[i], colour, opacity);
      if (opacity < 0.5f || surface == Surface::kUnchanged) continue;
      canvas.surface[i] = surface;
      canvas.owner[i] = owner;
    }
  }
}

}  // namespace morvale::scene
