/// A core with its caller's record and frame, on the scripted platform.
#pragma once

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include <morvale/morvale.h>
#include "fakes/platform_double.h"

using Scores = std::array<uint8_t, 5>;

/// A label map: five scores a cell, as the network gives them.
class ScoreMap {
 public:
  ScoreMap(int width, int rows, Scores fill);
  ScoreMap& paint(int x, int y, int w, int h, Scores scores);
  ScoreMap& at(int x, int y, Scores scores) { return paint(x, y, 1, 1, scores); }
  uint8_t* data() { return bytes_.data(); }
  const std::vector<uint8_t>& bytes() const { return bytes_; }

 private:
  int width_;
  std::vector<uint8_t> bytes_;
};

/// The 14 words of a result block.
std::array<int32_t, 14> words(const PersonMeta& meta);

class CoreFixture : public ::testing::Test {
 protected:
  CoreFixture();
  ~CoreFixture() override;

  /// Registers the record and opens the camera's model, then forgets the log lines of both.
  void start(int camera_type);

  /// The caller's next frame: width x height, flat luma, no colour, packed NV21 with chroma after luma.
  void set_frame(int width, int height, uint8_t luma);

  /// The runtime answers with this value everywhere, or with scores that become exactly these bytes.
  void answer(float logit);
  void answer(const ScoreMap& map);

  /// One whole frame as the camera service does it. Returns what Morvale_process returned.
  int run_frame();

  /// Red of pixel (column, row) of the network input.
  int red(int column, int row) const;

  /// Log lines written at `priority` since the last call of forget().
  std::vector<std::string> lines(int priority) const;
  void forget() { fakes::platform().log.clear(); }

  MorvaleData_t record_{};
  std::vector<uint8_t> frame_;
  MorvaleCore core_;
};
