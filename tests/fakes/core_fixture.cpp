#include "fakes/core_fixture.h"

#include <cstring>

ScoreMap::ScoreMap(int width, int rows, Scores fill)
    : width_(width), bytes_(static_cast<std::size_t>(width * rows * 5)) {
  paint(0, 0, width, rows, fill);
}

ScoreMap& ScoreMap::paint(int x, int y, int w, int h, Scores scores) {
  for (int row = y; row < y + h; ++row)
    for (int column = x; column < x + w; ++column)
      std::memcpy(&bytes_.at(static_cast<std::size_t>((row * width_ + column) * 5)), scores.data(), 5);
  return *this;
}

std::array<int32_t, 14> words(const PersonMeta& meta) {
  std::array<int32_t, 14> result;
  std::memcpy(result.data(), &meta, sizeof meta);
  return result;
}

CoreFixture::CoreFixture() {
  fakes::platform() = fakes::Platform();
  session_ = nullptr;
  inputs.clear();
  outputs.clear();
  VISUALDEBUG = 0;
  std::memset(N_segResult_Front, 0, sizeof N_segResult_Front);
  std::memset(N_segResult_Back, 0, sizeof N_segResult_Back);
}

CoreFixture::~CoreFixture() {
  // The scripted session outlives the test; the lists must not keep pointers into it.
  inputs.clear();
  outputs.clear();
  session_ = nullptr;
}

void CoreFixture::start(int camera_type) {
  record_.cameraType = camera_type;
  core_.Morvale_core_init(&record_);
  testing::internal::CaptureStdout();
  core_.Morvale_core_setModel(camera_type);
  testing::internal::GetCapturedStdout();
  answer(-10.0f);
  forget();
}

void CoreFixture::set_frame(int width, int height, uint8_t luma) {
  const auto pixels = static_cast<std::size_t>(width) * static_cast<std::size_t>(height);
  frame_.assign(pixels, luma);
  frame_.resize(pixels + static_cast<std::size_t>(width) * static_cast<std::size_t>(height / 2), 128);
  record_.width = width;
  record_.height = height;
  record_.stride = 0;
  record_.yPlane = record_.uvPlane = frame_.data();
}

void CoreFixture::answer(float logit) {
  fakes::platform().logits.assign(static_cast<std::size_t>(NETSIZE * NETSIZE * 5), logit);
}

// Byte b is the whole interval from b * 20 / 255 - 10 to the next: its middle is safe from rounding.
void CoreFixture::answer(const ScoreMap& map) {
  answer(-10.0f);
  for (std::size_t i = 0; i < map.bytes().size(); ++i)
    fakes::platform().logits.at(i) = (static_cast<float>(map.bytes()[i]) + 0.5f) * (20.0f / 255.0f) - 10.0f;
}

int CoreFixture::run_frame() {
  const int status = core_.Morvale_process();
  core_.Morvale_core_afterProcss();
  return status;
}

int CoreFixture::red(int column, int row) const { return core_.rgbInput[(row * PADSIZE + column) * 3]; }

std::vector<std::string> CoreFixture::lines(int priority) const {
  std::vector<std::string> result;
  for (const fakes::LogLine& line : fakes::platform().log)
    if (line.priority == priority) result.push_back(line.text);
  return result;
}
