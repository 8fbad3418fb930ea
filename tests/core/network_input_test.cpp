/// Morvale_process from the frame to the network's input: shapes, margins, chroma, what is read of a plane.
#include <climits>
#include <cstring>

#include "fakes/core_fixture.h"
#include "fakes/guarded_bytes.h"

namespace {

class NetworkInput : public CoreFixture {};

// Luma falls from 251 at the bottom of the frame to 1 at its top, so every row of the network input tells
// where it came from: rows of the picture differ, mirrored rows repeat, untouched rows are 0.
TEST_F(NetworkInput, FramesOfEveryShapeFillTheirPartOfTheInput) {
  struct Case {
    int width, height, camera, picture_rows, filled_rows, filled_columns, seg_factor;
    float scale;
  };
  const Case cases[] = {{4000, 3000, 16, 192, 256, 256, 48, 15.625f},
                        {1920, 1080, 16, 144, 256, 256, 36, 7.5f},
                        {1920, 1080, 0, 72, 128, 128, 18, 15.0f},
                        {1280, 960, 0, 96, 128, 128, 24, 10.0f},
                        {2000, 1000, 0, 64, 128, 128, 15, 15.625f},
                        {1280, 320, 16, 64, 128, 256, 28, 5.0f},  // the margin is no longer than the picture
                        {1000, 1000, 16, 256, 256, 256, 64, 3.90625f},
                        {1000, 1000, 0, 128, 128, 128, 32, 7.8125f},
                        {1080, 1920, 16, 256, 256, 144, 64, 4.21875f},
                        {1080, 1920, 0, 128, 128, 72, 32, 8.4375f}};
  for (const Case& c : cases) {
    SCOPED_TRACE(testing::Message() << c.width << "x" << c.height << " camera " << c.camera);
    start(c.camera);
    set_frame(c.width, c.height, 0);
    for (int y = 0; y < c.height; ++y)
      std::memset(frame_.data() + static_cast<std::ptrdiff_t>(y) * c.width, 1 + y * 250 / c.height,
                  static_cast<std::size_t>(c.width));
    ASSERT_EQ(core_.Morvale_process(), 0);
    EXPECT_EQ(core_.segFactor, c.seg_factor);
    EXPECT_EQ(core_.scaleRatio, c.scale);
    const int seam = c.picture_rows;
    EXPECT_EQ(red(0, 0), 1);
    EXPECT_GT(red(0, seam - 1), red(0, seam - 3));
    EXPECT_NE(red(c.filled_columns - 1, 0), 0);
    if (c.filled_columns < PADSIZE) {
      EXPECT_EQ(red(c.filled_columns, 0), 0);
    }
    if (c.filled_rows > seam) {
      EXPECT_GT(red(0, seam - 1), red(0, seam - 2));
      EXPECT_EQ(red(0, seam), red(0, seam - 1));
      EXPECT_EQ(red(5, seam + 1), red(5, seam - 2));
      EXPECT_EQ(red(0, c.filled_rows - 1), red(0, 2 * seam - c.filled_rows));
    }
    if (c.filled_rows < PADSIZE) {
      EXPECT_EQ(red(0, c.filled_rows), 0);
    }
  }
}

TEST_F(NetworkInput, APortraitFrameKeepsTheEarlierContentToItsRight) {
  start(16);
  set_frame(1000, 1000, 100);
  ASSERT_EQ(core_.Morvale_process(), 0);
  set_frame(1080, 1920, 200);
  ASSERT_EQ(core_.Morvale_process(), 0);
  for (const int row : {0, 128, 255}) {
    EXPECT_EQ(red(143, row), 200);
    EXPECT_EQ(red(144, row), 100);
    EXPECT_EQ(red(255, row), 100);
  }
}

// 1080 x 2400 becomes 115 columns with a margin of -141: it ends at column -26, its block at -32. So row r
// also writes columns -32..-27, which are 224..229 of row r - 1, from columns 261..256, which are 5..0 of row
// r + 1 and still hold the frame before. The first row writes, the last one reads, outside the picture.
TEST_F(NetworkInput, ATallPortraitFrameReachesIntoTheNeighbouringRows) {
  start(16);
  set_frame(1080, 2400, 100);
  ASSERT_EQ(core_.Morvale_process(), 0);
  EXPECT_EQ(red(224, 10), 0);
  set_frame(1080, 2400, 200);
  ASSERT_EQ(core_.Morvale_process(), 0);
  for (const int row : {0, 1, 100, 253}) {
    EXPECT_EQ(red(0, row), 200);
    EXPECT_EQ(red(114, row), 200);
    EXPECT_EQ(red(115, row), 0);
    EXPECT_EQ(red(223, row), 0);
    EXPECT_EQ(red(224, row), 100);
    EXPECT_EQ(red(229, row), 100);
    EXPECT_EQ(red(230, row), 0);
  }
  for (const int row : {254, 255}) {
    EXPECT_EQ(red(0, row), 200);
    EXPECT_EQ(red(224, row), 0);
  }
}

// 130 columns with a margin of -126 end at column 4, the last block at 0: the picture's own first four
// columns are rewritten from what lay in the next row.
TEST_F(NetworkInput, AMarginThatEndsInsideTheRowOverwritesThePicture) {
  start(16);
  set_frame(256, 256, 50);
  ASSERT_EQ(core_.Morvale_process(), 0);
  set_frame(130, 256, 200);
  ASSERT_EQ(core_.Morvale_process(), 0);
  for (const int row : {0, 7, 254}) {
    EXPECT_EQ(red(0, row), 50);
    EXPECT_EQ(red(3, row), 50);
    EXPECT_EQ(red(4, row), 200);
    EXPECT_EQ(red(129, row), 200);
    EXPECT_EQ(red(130, row), 50);
  }
}

// Frames that shrink to nothing, one, two or three rows or columns. The sanitizer build watches the memory.
TEST_F(NetworkInput, SliversOfFramesAreAnalysed) {
  struct Case {
    int width, height, seg_factor;
  };
  const Case cases[] = {{4000, 4, 28},  {4000, 10, 28}, {4000, 32, 28}, {4000, 48, 28}, {4, 4000, 64},
                        {10, 4000, 64}, {32, 4000, 64}, {1, 1000, 64},  {2, 1024, 64}};
  start(16);
  for (const Case& c : cases) {
    set_frame(c.width, c.height, 100);
    EXPECT_EQ(run_frame(), 0) << c.width << "x" << c.height;
    EXPECT_EQ(core_.segFactor, c.seg_factor);
  }
  start(16);
  set_frame(4000, 48, 100);  // three rows: the odd one repeats, then all three are mirrored
  ASSERT_EQ(run_frame(), 0);
  EXPECT_EQ(red(9, 5), 100);
  EXPECT_EQ(red(9, 6), 0);
}

// A frame smaller than the network's input is enlarged; the neighbours of its last column and row end with
// it.
TEST_F(NetworkInput, ASmallFrameIsNotReadPastItsEnd) {
  for (const int camera : {16, 0}) {
    start(camera);
    for (const auto& [width, height] :
         {std::pair{100, 100}, std::pair{200, 150}, std::pair{2, 2}, std::pair{90, 160}}) {
      set_frame(width, height, 100);
      EXPECT_EQ(run_frame(), 0);
      EXPECT_EQ(red(10, 10), 100);
    }
  }
}

// Enlarging blends the last luma row with the row below it, and the last column with the column right of it,
// as they lie in memory: the start of the next row, the first chroma row, the padding. Where the frame says
// nothing of that memory the edge stands in. Luma is 40, chroma pairs are 200 and 100, padding is 240.
TEST_F(NetworkInput, TheRowBelowTheLumaOfASmallFrameIsTheFirstOfItsChroma) {
  struct Pixel {
    int column, row, value;
  };
  struct Case {
    const char* why;
    int camera, size, stride;
    std::ptrdiff_t chroma;
    bool named;
    std::vector<Pixel> pixels;
  };
  const std::vector<Pixel> quarters = {{0, 124, 40},    {0, 125, 80},    {0, 126, 120},   {0, 127, 160},
                                       {2, 127, 122},   {4, 127, 85},    {127, 122, 100}, {127, 123, 130},
                                       {127, 124, 160}, {127, 127, 171}, {126, 124, 120}, {124, 124, 40}};
  const std::vector<Pixel> halves = {{0, 254, 40},   {0, 255, 120},  {1, 255, 95},    {2, 255, 70},
                                     {255, 252, 40}, {255, 253, 80}, {255, 254, 120}, {255, 255, 135}};
  const std::vector<Pixel> edge = {{0, 125, 40}, {0, 127, 40}, {127, 124, 40}, {127, 127, 40}, {4, 127, 40}};
  const Case cases[] = {{"quarter steps", 0, 32, 0, 32 * 32, false, quarters},
                        {"the chroma is named, and follows", 0, 32, 0, 32 * 32, true, quarters},
                        {"halves are averaged", 16, 128, 0, 128 * 128, false, halves},
                        {"padding follows",
                         0,
                         32,
                         40,
                         40 * 32,
                         false,
                         {{0, 126, 140}, {0, 127, 190}, {4, 127, 190}, {127, 124, 190}, {127, 127, 227}}},
                        {"a chroma plane elsewhere", 0, 32, 0, 1100, true, edge}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.why);
    start(c.camera);
    const auto pixels = static_cast<std::size_t>(c.size * c.size);
    guarded::Bytes content(static_cast<std::size_t>(c.chroma) + pixels / 2, 240);
    std::fill_n(content.begin(), pixels, uint8_t{40});
    for (std::size_t i = 0; i < pixels / 2; ++i)
      content[static_cast<std::size_t>(c.chroma) + i] = i % 2 == 0 ? 200 : 100;
    content[content.size() - static_cast<std::size_t>(c.size)] = 60;  // V of the last chroma row's first pair
    guarded::GuardedBytes frame(content, guarded::Edge::kBack);
    record_.width = record_.height = c.size;
    record_.stride = c.stride;
    record_.yPlane = frame.data();
    record_.uvPlane = frame.data() + (c.named ? c.chroma : 0);
    ASSERT_EQ(core_.Morvale_process(), 0);
    for (const Pixel& p : c.pixels)
      EXPECT_EQ(int{core_.resizedFrame[p.row * PADSIZE + p.column]}, p.value) << p.column << ", " << p.row;
    // Below the last chroma row there is nothing: it repeats.
    EXPECT_EQ(int{core_.resizedFrame[PADSIZE * (PADSIZE + PADSIZE / 2 - 1)]}, 60);
  }
}

// 257 steps of 257 / 256: the last column and row are 255 / 256 of their right and lower neighbours. A row of
// chroma ends in a V whose U is the next row's first byte; the frame's last V has none, and its left
// neighbour stands in.
TEST_F(NetworkInput, AnOddFrameIsReadToItsLastByteAndNoFurther) {
  start(16);
  guarded::Bytes content(257 * 257, 100);
  for (std::size_t i = 0; i < 257; ++i) content[i * 257 + 256] = content[256 * 257 + i] = 228;
  for (int row = 0; row < 128; ++row)
    for (int i = 0; i < 257; ++i) content.push_back(i % 2 == 0 ? 150 : 90);
  for (const guarded::Edge edge : guarded::kEdges) {
    guarded::GuardedBytes frame(content, edge);
    record_.width = record_.height = 257;
    record_.yPlane = record_.uvPlane = frame.data();
    ASSERT_EQ(core_.Morvale_process(), 0);
    const uint8_t* luma = core_.resizedFrame;
    EXPECT_EQ(int{luma[0]}, 100);
    EXPECT_EQ(int{luma[255]}, 227);
    EXPECT_EQ(int{luma[255 * 256]}, 227);
    EXPECT_EQ(int{luma[255 * 256 + 255]}, 227);
    const uint8_t* last_pair = core_.resizedFrame + 256 * 256 + 254;
    for (const auto& [row, u] :
         {std::pair{0, 119}, std::pair{1, 119}, std::pair{126, 105}, std::pair{127, 90}}) {
      EXPECT_EQ(int{last_pair[row * 256]}, 150);
      EXPECT_EQ(int{last_pair[row * 256 + 1]}, u) << row;
    }
  }
}

TEST_F(NetworkInput, ChromaIsFoundBesideOrBehindTheLumaRows) {
  // Rows of luma are read `width` bytes apart, whatever the stride; only the chroma plane is found with it.
  struct Case {
    const char* why;
    int stride;
    std::ptrdiff_t chroma;
    bool separate;
  };
  const Case cases[] = {{"no stride: behind the packed plane", 0, 256 * 256, false},
                        {"stride equal to the width", 256, 256 * 256, false},
                        {"padded rows: behind the padded plane", 320, 320 * 256, false},
                        {"a stride below the width: inside the luma rows", 200, 200 * 256, false},
                        {"a pointer of its own is used as it is", 320, 90'000, true},
                        {"whatever the stride: below the width", 100, 90'000, true},
                        {"whatever the stride: negative", -1, 90'000, true},
                        {"whatever the stride: lowest", INT_MIN, 90'000, true},
                        {"whatever the stride: out of int32 with the height", INT_MAX, 90'000, true}};
  start(16);
  for (const Case& c : cases) {
    SCOPED_TRACE(c.why);
    set_frame(256, 256, 0);
    frame_.assign(90'000 + 320 * 128, 0);
    for (std::size_t i = 0; i < 65'536; ++i) frame_[i] = static_cast<uint8_t>(i / 256);
    std::memset(frame_.data() + c.chroma, 128, 256 * 128);
    for (int i = 0; i < 256 * 128; i += 2) frame_[static_cast<std::size_t>(c.chroma + i)] = 148;
    record_.stride = c.stride;
    record_.yPlane = frame_.data();
    record_.uvPlane = frame_.data() + (c.separate ? c.chroma : 0);
    ASSERT_EQ(core_.Morvale_process(), 0);
    // V = 148: 20 * 22458 / 16384 = 27.4 on red, -20 * 11436 / 16384 = -13.96 on green, nothing on blue.
    for (const int row : {20, 90, 150}) {
      const uint8_t* pixel = core_.rgbInput + row * 768 + 24;
      EXPECT_EQ(pixel[0], row + 27);
      EXPECT_EQ(pixel[1], row - 14);
      EXPECT_EQ(pixel[2], row);
    }
  }
}

// x / 255 + x / 255 - 1 in double. As x * (1 / 127.5) - 1 in float 207 bytes, from 48 to 254, come out
// different, these among them.
TEST_F(NetworkInput, TheInputIsNormalisedInDouble) {
  start(16);
  set_frame(256, 256, 0);
  for (std::size_t i = 0; i < 65'536; ++i) frame_[i] = static_cast<uint8_t>(i % 256);
  ASSERT_EQ(core_.Morvale_process(), 0);
  const float* row = core_.netInput + 7 * 768;
  EXPECT_EQ(row[0], -1.0f);
  EXPECT_EQ(row[3 * 96 + 1], -0x1.f9f9fap-3f);
  EXPECT_EQ(row[3 * 97 + 2], -0x1.e9e9eap-3f);
  EXPECT_EQ(row[3 * 98], -0x1.d9d9dap-3f);
  EXPECT_EQ(row[3 * 128], 0x1.010102p-8f);
  EXPECT_EQ(row[3 * 255 + 2], 1.0f);
}

}  // namespace
