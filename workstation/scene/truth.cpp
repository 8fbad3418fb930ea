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

bool is_head(Surface s) { return s == Surface::kHair || s == Surface::kSkin || s == Surface::kFeature; }

/// The part of `parts` that a pixel of `size` in a row lies in.
int part_of(int at, int size, int parts) { return ((at + 1) * parts - 1) / size; }

}  // namespace

struct TruthCounter::PersonPixels {
  Bounds face, head, person;
  MeanColour skin;
};

TruthCounter::TruthCounter(int width, int height, int people)
    : width_(width), height_(height), people_(static_cast<size_t>(people)) {}

TruthCounter::~TruthCounter() = default;

/// Pixels begin .. end - 1 of a row, of one surface of one person.
struct TruthCounter::Run {
  int begin, end, y;
  Surface surface;
  uint8_t owner;
  const uint8_t* rgb;  ///< of the first pixel

  int length() const { return end - begin; }
  void widen(Bounds& bounds) const {
    bounds.add(begin, y);
    bounds.add(end - 1, y);
  }
};

void TruthCounter::add(const Canvas& canvas, const std::vector<uint8_t>& rgb) {
  for (int y = canvas.top; y < canvas.bottom(); ++y) {
    const size_t row = canvas.index(0, y);
    const Surface* surface = &canvas.surface[row];
    const uint8_t* owner = &canvas.owner[row];
    for (int begin = 0, end = 0; begin < width_; begin = end) {
      while (++end < width_ && surface[end] == surface[begin] && owner[end] == owner[begin]) {
      }
      if (surface[begin] != Surface::kBackground)
        add_run({begin, end, y, surface[begin], owner[begin], &rgb[3 * (row + static_cast<size_t>(begin))]});
    }
  }
}

void TruthCounter::add_run(const Run& run) {
  PersonPixels& owner = people_[run.owner];
  person_ += run.length();
  if (run.surface == Surface::kBody) body_ += run.length();
  run.widen(owner.person);
  if (is_head(run.surface)) add_head(run);
}

void TruthCounter::add_head(const Run& run) {
  PersonPixels& owner = people_[run.owner];
  run.widen(owner.head);
  auto& cells = heads_[static_cast<size_t>(part_of(run.y, height_, kTruthRows))];
  for (int x = run.begin; x < run.end; ++x) ++cells[static_cast<size_t>(part_of(x, width_, kTruthColumns))];
  if (run.surface == Surface::kHair) return;
  run.widen(owner.face);
  if (run.surface != Surface::kSkin) return;
  for (const uint8_t* at = run.rgb; at < run.rgb + 3 * run.length(); at += 3)
    owner.skin.add(at[0], at[1], at[2]);
}

SceneTruth TruthCounter::truth() const {
  SceneTruth truth;
  const double whole = static_cast<double>(width_) * height_;
  truth.person_share = 100.0 * static_cast<double>(person_) / whole;
  truth.body_share = 100.0 * static_cast<double>(body_) / whole;
  for (const PersonPixels& p : people_)
    truth.people.push_back({p.face.box(), p.head.box(), p.person.box(), p.skin.mean()});
  const auto side = [](int at, int size, int parts) { return size * (at + 1) / parts - size * at / parts; };
  for (int row = 0; row < kTruthRows; ++row) {
    for (int column = 0; column < kTruthColumns; ++column) {
      const int pixels = side(row, height_, kTruthRows) * side(column, width_, kTruthColumns);
      const int head = heads_[static_cast<size_t>(row)][static_cast<size_t>(column)];
      truth.grid[static_cast<size_t>(row)] += pixels > 0 && 2 * head >= pixels ? '1' : '0';
    }
  }
  return truth;
}

}  // namespace morvale::scene
