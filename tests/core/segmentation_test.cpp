/// The exported steps around the network's input and output.
#include <cmath>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <limits>
#include <numeric>

#include "fakes/core_fixture.h"

namespace {

class Segmentation : public CoreFixture {
 protected:
  Segmentation() { set_model(128); }
  ~Segmentation() override { set_model(256); }
  static void set_model(int pad) {
    PADSIZE = pad;
    NETSIZE = pad / 4;
  }
};

TEST_F(Segmentation, SmoothingWeighsByTheChangeOfAllFiveScores) {
  struct Case {
    const char* why;
    Scores current, previous, front, back;
  };
  const Case cases[] = {
      {"a still cell keeps the frame before",
       {9, 8, 7, 6, 5},
       {9, 8, 7, 6, 5},
       {9, 8, 7, 6, 5},
       {9, 8, 7, 6, 5}},
      {"a change of 1 rounds to none",
       {101, 90, 80, 70, 60},
       {100, 90, 80, 70, 60},
       {100, 90, 80, 70, 60},
       {100, 90, 80, 70, 60}},
      {"the sum is rounded up by 2", {203, 0, 0, 0, 0}, {0, 0, 0, 0, 0}, {80, 0, 0, 0, 0}, {65, 0, 0, 0, 0}},
      {"both maps count, each byte on its own",
       {50, 40, 30, 20, 10},
       {10, 20, 30, 40, 50},
       {19, 24, 30, 35, 40},
       {17, 23, 30, 36, 42}},
      {"front: 127 still blends",
       {255, 254, 0, 0, 0},
       {0, 0, 0, 0, 0},
       {253, 252, 0, 0, 0},
       {203, 202, 0, 0, 0}},
      {"front: 128 takes the new frame",
       {255, 255, 0, 0, 0},
       {0, 0, 0, 0, 0},
       {255, 255, 0, 0, 0},
       {203, 203, 0, 0, 0}},
      {"front: 256 wraps to 0 and keeps the old frame",
       {255, 255, 255, 255, 2},
       {0, 0, 0, 0, 0},
       {0, 0, 0, 0, 0},
       {255, 255, 255, 255, 2}},
      {"front: 319 wraps to 63",
       {255, 255, 255, 255, 255},
       {0, 0, 0, 0, 0},
       {125, 125, 125, 125, 125},
       {255, 255, 255, 255, 255}},
      {"front: 319 wraps to 63, downwards",
       {0, 0, 0, 0, 0},
       {255, 255, 255, 255, 255},
       {129, 129, 129, 129, 129},
       {0, 0, 0, 0, 0}},
  };
  for (const bool front : {true, false}) {
    ScoreMap current(32, 32, {}), previous(32, 32, {});
    ScoreMap expected(32, 32, {});
    // The cases stand at the map's end: a count that is too short misses them.
    int x = 32 - static_cast<int>(std::size(cases));
    for (const Case& c : cases) {
      current.at(x, 31, c.current);
      previous.at(x, 31, c.previous);
      expected.at(x++, 31, front ? c.front : c.back);
    }
    const ScoreMap before = previous;
    const auto smooth = front ? segmetationIIR_Front : segmetationIIR_Back;
    EXPECT_EQ(smooth(current.data(), previous.data(), nullptr, 2), current.data());
    x = 32 - static_cast<int>(std::size(cases));
    for (const Case& c : cases) {
      const auto at = current.bytes().begin() + (31 * 32 + x++) * 5;
      EXPECT_EQ(std::vector<uint8_t>(at, at + 5),
                std::vector<uint8_t>((front ? c.front : c.back).begin(), (front ? c.front : c.back).end()))
          << c.why << (front ? " (front)" : " (back)");
    }
    EXPECT_EQ(current.bytes(), expected.bytes());
    EXPECT_EQ(previous.bytes(), before.bytes());
  }
}

TEST_F(Segmentation, TheFirstTwoFramesOnlyReplaceTheirPredecessor) {
  for (const auto smooth : {segmetationIIR_Front, segmetationIIR_Back})
    for (const int count : {0, 1}) {
      ScoreMap current(32, 32, {1, 2, 3, 4, 5}), previous(33, 32, {90, 91, 92, 93, 94});
      const ScoreMap expected = current;
      EXPECT_EQ(smooth(current.data(), previous.data(), nullptr, count), current.data());
      EXPECT_EQ(current.bytes(), expected.bytes());
      EXPECT_TRUE(std::equal(expected.bytes().begin(), expected.bytes().end(), previous.bytes().begin()));
      EXPECT_EQ(previous.bytes()[5120], 90);
    }
}

// The factor is the float nearest to 1 / 127.5. Its neighbours, a division or a fused multiply-add all give
// another float for at least one of these bytes.
TEST_F(Segmentation, NormalizeInputMultipliesByTheNearestFloat) {
  std::vector<uint8_t> bytes(432);
  std::iota(bytes.begin(), bytes.end(), static_cast<uint8_t>(0));
  std::vector<float> floats(433, 5.0f);
  EXPECT_EQ(normalizeInput(bytes.data(), floats.data(), 12), bytes.data());
  EXPECT_EQ(floats[0], -1.0f);
  EXPECT_EQ(floats[81], -0.364705861f);
  EXPECT_EQ(floats[84], -0.34117645f);
  EXPECT_EQ(floats[128], 0.003921628f);
  EXPECT_EQ(floats[255], 1.0f);
  EXPECT_EQ(floats[431], floats[175]);
  EXPECT_EQ(floats[432], 5.0f);
}

TEST_F(Segmentation, NormaliserWorkInBlocksOfEight) {
  for (const auto& [side, floats_written, bytes_written] :
       {std::array{0, 0, 0}, std::array{1, 8, 8}, std::array{2, 16, 8}, std::array{3, 32, 24}}) {
    std::vector<uint8_t> in(40, 255), out(40, 99);
    std::vector<float> floats(40, 5.0f), scores(40, -10.0f);
    normalizeInput(in.data(), floats.data(), side);
    EXPECT_EQ(std::count(floats.begin(), floats.end(), 1.0f), floats_written) << side;
    EXPECT_EQ(normalizeOutput(scores.data(), out.data(), side), scores.data());
    EXPECT_EQ(std::count(out.begin(), out.end(), 0), bytes_written) << side;
  }
}

TEST_F(Segmentation, NormalizeOutputWrapsWhereGetOutputArrClamps) {
  struct Case {
    float score;
    int wrapped, clamped;
  };
  const Case cases[] = {{-10.0f, 0, 0},
                        {10.0f, 255, 255},
                        {11.0f, 11, 255},
                        {-11.0f, 244, 0},
                        {0.0f, 127, 127},
                        {-10.05f, 0, 0},
                        {-0x1.55555cp-1f, 118, 119},  // (v + 10) * 12.75 against (v + 10) * 255 / 20
                        {std::numeric_limits<float>::quiet_NaN(), 0, 0}};
  std::vector<float> floats(5120, 10.0f);
  std::vector<uint8_t> wrapped(8, 1), clamped(2049, 1);
  for (std::size_t i = 0; i < std::size(cases); ++i) floats[i] = cases[i].score;
  normalizeOutput(floats.data(), wrapped.data(), 2);
  EXPECT_EQ(getOutputArr(floats.data(), clamped.data(), 2), 0);
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    EXPECT_EQ(wrapped[i], cases[i].wrapped) << cases[i].score;
    EXPECT_EQ(clamped[i], cases[i].clamped) << cases[i].score;
  }
  EXPECT_EQ(clamped[2047], 255);
  EXPECT_EQ(clamped[2048], 1);
  EXPECT_EQ(getOutputArr(floats.data(), clamped.data(), 0), 0);
  EXPECT_EQ(getOutputArr(floats.data(), clamped.data(), -3), 0);
  EXPECT_EQ(clamped[0], 0);
}

TEST_F(Segmentation, CalcSegFactorFitsTheFrameAndKnowsItsRows) {
  struct Case {
    int pad, height, width, first, second, factor;
  };
  const Case cases[] = {
      {256, 3000, 4000, 192, 256, 48}, {256, 1080, 1920, 144, 256, 36}, {256, 1920, 1080, 256, 144, 64},
      {256, 1000, 1000, 256, 256, 64}, {256, 1000, 2000, 128, 256, 28}, {256, 1080, 1440, 192, 256, 48},
      {128, 3000, 4000, 96, 128, 24},  {128, 1080, 1920, 72, 128, 18},  {128, 999, 999, 128, 128, 32},
      {128, 1000, 2000, 64, 128, 15},  {256, 5, 512, 3, 256, 28},  // 2.5 rounds away from zero
      {256, 512, 1, 256, 1, 64}};                                  // and so does 0.5
  for (const Case& c : cases) {
    set_model(c.pad);
    int first = -1, second = -1, factor = -1;
    calcSegFactor(c.height, c.width, first, second, factor);
    EXPECT_EQ((std::array{first, second, factor}), (std::array{c.first, c.second, c.factor}))
        << c.width << "x" << c.height << " in " << c.pad;
  }
}

TEST_F(Segmentation, TimeIsCutToMilliseconds) {
  fakes::platform().clock_us = 1'700'000'000'567'999;
  EXPECT_EQ(currentTimeInMilliseconds(), 1'700'000'000'567);
  fakes::platform().clock_us = 1'700'000'000'568'000;
  EXPECT_EQ(currentTimeInMilliseconds(), 1'700'000'000'568);
}

TEST_F(Segmentation, DumpImageWritesExactlyItsBytes) {
  const std::string path = testing::TempDir() + "morvale_dump_test.raw";
  const uint8_t data[] = {1, 0, 255, 10, 13};
  core_.dumpImage(data, path, 5);
  core_.dumpImage(data, path, 4);  // a second dump truncates
  std::ifstream file(path, std::ios::binary);
  EXPECT_EQ(std::string(std::istreambuf_iterator<char>(file), {}), std::string("\x01\0\xff\n", 4));
  std::remove(path.c_str());
  core_.dumpImage(data, "/nonexistent/folder/dump.raw", 5);
  EXPECT_TRUE(fakes::platform().log.empty());
}

TEST_F(Segmentation, TheInputFileIsReadWholeOrTheProcessEnds) {
  const std::string path = testing::TempDir() + "morvale_inarray_test.raw";
  const auto ends = testing::ExitedWithCode(1);
  uint8_t buffer[16] = {};
  fakes::platform().input_file = path;
  EXPECT_EXIT(loadInputData(buffer, 16), ends, "") << "no file";
  std::ofstream(path, std::ios::binary).flush();
  EXPECT_EXIT(loadInputData(buffer, 16), ends, "") << "an empty file";
  std::ofstream(path, std::ios::binary) << "abc";
  EXPECT_EQ(loadInputData(buffer, 1), 0) << "the size is ignored";
  EXPECT_EQ(std::string(reinterpret_cast<char*>(buffer), 5), std::string("abc\0", 5));
  std::remove(path.c_str());
  fakes::platform().input_file = "/";
  EXPECT_EXIT(loadInputData(buffer, 16), ends, "") << "a folder, which has a length and cannot be read";
}

}  // namespace
