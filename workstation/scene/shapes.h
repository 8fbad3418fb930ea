/// The one solid of which everything is built, and the picture that it is drawn into.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstddef>
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

  /// The pixels that it can touch of `first`..`last` - 1: columns and rows, the end excluded.
  struct Range {
    int begin, end;
  };
  Range columns(int first, int last) const;
  Range rows(int first, int last) const;
};

/// A stretch of a row's pixels against a solid, all of them in one loop, which compilers can make vectors of.
struct BlobRow {
  static constexpr int kMost = 256;

  /// For the centres of pixels x .. x + count - 1 of row y.
  void measure(const Blob& blob, int x, int y, int count);
  Hit hit(int i) const { return {u_[i], v_[i], inside_[i], {nx_[i], ny_[i], nz_[i]}}; }

  float cover[kMost];  ///< how much of the pixel it covers, 0..1

 private:
  /// A copy of the solid: what is written cannot be part of it.
  template <bool kSquare>
  void measure_all(const Blob blob, int x, int y, int count);

  float u_[kMost], v_[kMost], inside_[kMost], nx_[kMost], ny_[kMost], nz_[kMost];
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

/// Some rows of a picture while it is painted: light, and beside it what is seen and of whom.
struct Canvas {
  Canvas(int width_, int height_, int most_rows);

  /// Begins anew with other rows: `light` as it is behind everything, and nobody before it.
  void begin(int top_, int rows_, const Colour* behind);

  int width, height;      ///< of the whole picture
  int top = 0, rows = 0;  ///< the rows at hand
  std::vector<Colour> light;
  std::vector<Surface> surface;
  std::vector<uint8_t> owner;  ///< a person's index, or kNobody

  /// Where a stretch of a row is half covered or more, `person`'s surface is what is seen.
  void mark(int x, int y, const float* cover, int count, Surface seen, uint8_t person);

  int bottom() const { return top + rows; }
  size_t index(int x, int y) const {
    return static_cast<size_t>(y - top) * static_cast<size_t>(width) + static_cast<size_t>(x);
  }
};

/// Paints a solid over the canvas. paint(hit, opacity) gives the colour at a hit and may lower the opacity,
/// which comes in as the cover.
template <class Paint>
void fill(Canvas& canvas, const Blob& blob, Surface surface, uint8_t owner, Paint paint) {
  const Blob::Range columns = blob.columns(0, canvas.width), rows = blob.rows(canvas.top, canvas.bottom());
  BlobRow row;
  for (int y = rows.begin; y < rows.end; ++y) {
    for (int x = columns.begin; x < columns.end; x += BlobRow::kMost) {
      const int count = std::min(BlobRow::kMost, columns.end - x);
      row.measure(blob, x, y, count);
      Colour* light = &canvas.light[canvas.index(x, y)];
      for (int i = 0; i < count; ++i) {
        if (row.cover[i] <= 0) continue;
        const Colour colour = paint(row.hit(i), row.cover[i]);
        light[i] = mix(light[i], colour, row.cover[i]);
      }
      if (surface != Surface::kUnchanged) canvas.mark(x, y, row.cover, count, surface, owner);
    }
  }
}

}  // namespace morvale::scene
