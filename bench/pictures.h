/// Made-up camera frames and score maps: the same on every machine and in every run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace bench {

using Bytes = std::vector<uint8_t>;

/// A slope with noise on it, `channels` bytes a pixel: neighbours resemble each other, but no two blocks are
/// alike.
Bytes picture(int width, int height, int channels, uint32_t seed);

/// The same as NV21, chroma behind the luma plane, with a block of spare bytes at the end.
Bytes nv21_picture(int width, int height, uint32_t seed);

/// A label map: five scores a cell, and one byte more for the sixth plane of the split.
class ScoreMap {
 public:
  /// All background.
  ScoreMap(int width, int height);

  /// An ellipse that fills the box, in which `label` wins by far.
  void paint_blob(int x, int y, int width, int height, int label);

  const Bytes& bytes() const { return bytes_; }

  /// One plane per label.
  std::vector<Bytes> planes() const;

  /// The network's scores from which these bytes come, for a map of net_size x net_size cells: what lies
  /// below the painted rows is background.
  std::vector<float> network_scores(int net_size) const;

 private:
  int width_;
  Bytes bytes_;
};

/// `count` faces on a grid of columns x rows, cut short when the last row is not full.
ScoreMap faces_on_grid(int width, int height, int count, int columns, int rows);

/// What the front camera's network sees: one face that fills much of 64 x 48 cells.
ScoreMap portrait();

/// The same of a frame of 16:9, in 64 x 36 cells.
ScoreMap wide_portrait();

/// What the back camera's network sees: one person in 32 x 18 cells.
ScoreMap person();

}  // namespace bench
