#include "scene/truth.h"

namespace morvale::scene {
namespace {

/// The box of the pixels added to it.
class Bounds {
 public:
  void add(int x, int y) {
    left_ = std::min(left_, x), right_ = std::max(right_, x);
    top_ = std::min(top_, y), bottom_ = std::max(bottom_, y);
  }
  FaceRect box() const {
    if (right_ < left_) return {0, 0, 0, 0};
    return {left_, top_, right_ - left_ + 1, bottom_ - top_ + 1};
  }

 private:
  int left_ = 1 << 30, top_ = 1 << 30, right_ = -1, bottom_ = -1;
};

/// A running mean of colours. The hexcone's hue, as the library's own figures use it: signed around red, so
/// that skin on both sides of 0 has a mean.
class MeanColour {
 public:
  void add(int r, int g, int b) {
    const int most = std::max({r, g, b}), least = std::min({r, g, b}), spread = most - least;
    double hue = 0;
    if (spread > 0) {
      if (most == r) {
        hue = 60.0 * (g - b) / spread;
      } else {
        hue = most == g ? 60.0 * (b - r) / spread + 120 : 60.0 * (r - g) / spread + 240;
      }
    }
    sums_[0] += hue;
    sums_[1] += most > 0 ? 255.0 * spread / most : 0;
    sums_[2] += most;
    ++count_;
  }
  std::array<double, 3> mean() const {
    if (count_ == 0) return {0, 0, 0};
    return {sums_[0] / count_, sums_[1] / count_, sums_[2] / count_};
  }

 private:
  double sums_[3] = {};
  int count_ = 0;
};

struct PersonPixels {
  Bounds face, head, person;
  MeanColour skin;
};

bool is_head(Surface s) { return s == Surface::kHair || s == Surface::kSkin || s == Surface::kFeature; }

std::string grid_row(const Canvas& canvas, int row) {
  std::string cells;
  const int top = canvas.height * row / kTruthRows, bottom = canvas.height * (row + 1) / kTruthRows;
  for (int column = 0; column < kTruthColumns; ++column) {
    const int left = canvas.width * column / kTruthColumns,
              right = canvas.width * (column + 1) / kTruthColumns;
    int head = 0;
    for (int y = top; y < bottom; ++y)
      for (int x = left; x < right; ++x) head += is_head(canvas.surface[canvas.index(x, y)]);
    const int pixels = (bottom - top) * (right - left);
    cells += pixels > 0 && 2 * head >= pixels ? '1' : '0';
  }
  return cells;
}

}  // namespace

SceneTruth truth_of(const Canvas& canvas, const std::vector<uint8_t>& rgb, int people) {
  std::vector<PersonPixels> pixels(static_cast<size_t>(people));
  int64_t person = 0, body = 0;
  for (int y = 0; y < canvas.height; ++y) {
    for (int x = 0; x < canvas.width; ++x) {
      const size_t i = canvas.index(x, y);
      const Surface surface = canvas.surface[i];
      if (surface == Surface::kBackground) continue;
      PersonPixels& owner = pixels[canvas.owner[i]];
      ++person;
      body += surface == Surface::kBody;
      owner.person.add(x, y);
      if (is_head(surface)) owner.head.add(x, y);
      if (surface == Surface::kSkin || surface == Surface::kFeature) owner.face.add(x, y);
      if (surface == Surface::kSkin) owner.skin.add(rgb[3 * i], rgb[3 * i + 1], rgb[3 * i + 2]);
    }
  }
  SceneTruth truth;
  const double whole = static_cast<double>(canvas.width) * canvas.height;
  truth.person_share = 100.0 * static_cast<double>(person) / whole;
  truth.body_share = 100.0 * static_cast<double>(body) / whole;
  for (const PersonPixels& p : pixels)
    truth.people.push_back({p.face.box(), p.head.box(), p.person.box(), p.skin.mean()});
  for (int row = 0; row < kTruthRows; ++row) truth.grid[static_cast<size_t>(row)] = grid_row(canvas, row);
  return truth;
}

}  // namespace morvale::scene
