/// Thin frames: samples taken and put back, their form in files, and what is refused.
#include "session/thin.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <stdexcept>
#include <string>

#include "fakes/luma_planes.h"
#include "record/thin_frame.h"
#include "session/frame_files.h"

namespace {

using namespace morvale::session;
using Bytes = std::vector<uint8_t>;

/// A luma plane of three rows of five bytes, of which a last column leads into the next row and past the end,
/// and a chroma plane of one row of two and a half pairs.
ThinFrame small_frame() {
  ThinFrame frame;
  frame.luma = {0, 15, 5, {0, 2}, {1, 3, 5}};
  frame.chroma = {15, 5, 5, {0}, {0, 2}};
  return frame;
}

const Bytes kPixels{0,  1,  2,  3,  4,   //
                    10, 11, 12, 13, 14,  //
                    20, 21, 22, 23, 24,  //
                    50, 51, 52, 53, 54};

TEST(Thin, SamplesGoBackWhereTheyCameFrom) {
  ThinFrame frame = small_frame();
  take_samples(frame, kPixels.data(), kPixels.data() + 15);
  // The column behind the last row is the last byte that there is; the chroma column behind the row the last
  // whole pair.
  EXPECT_EQ(frame.samples, (Bytes{1, 3, 10, 21, 23, 24, 50, 51, 52, 53}));
  EXPECT_EQ(thick_pixels(frame, 20),
            (Bytes{0, 1, 1, 3, 3, 10, 1, 1, 3, 3, 0, 21, 21, 23, 24, 50, 51, 52, 53, 0}));
}

TEST(Thin, TheEyeGetsWhatIsBesideWhatIsMissing) {
  ThinFrame frame;
  frame.luma = {0, 12, 4, {0, 2}, {0, 2}};
  frame.chroma = {12, 4, 4, {0}, {0}};
  frame.samples = {1, 2, 3, 4, 8, 9};
  EXPECT_EQ(thick_pixels(frame, 16), (Bytes{1, 1, 2, 2, 1, 1, 2, 2, 3, 3, 4, 4, 8, 9, 8, 9}));
}

TEST(Thin, ItsBytesAreReadBackAndHostileOnesRefused) {
  ThinFrame frame = small_frame();
  take_samples(frame, kPixels.data(), kPixels.data() + 15);
  const Bytes bytes = thin_bytes(frame);
  ASSERT_EQ(bytes.size(), 8u + 2 * 20 + (2 + 3 + 1 + 2) * 4 + 10);
  const ThinFrame read = parse_thin(bytes, 20);
  EXPECT_EQ(read.luma.rows, frame.luma.rows);
  EXPECT_EQ(read.luma.columns, frame.luma.columns);
  EXPECT_EQ(read.chroma.offset, 15u);
  EXPECT_EQ(read.samples, frame.samples);

  EXPECT_THROW(parse_thin(bytes, 19), std::runtime_error) << "the chroma plane leaves the frame";
  for (size_t size = 0; size < bytes.size(); ++size)
    EXPECT_THROW(parse_thin(std::span(bytes).first(size), 20), std::runtime_error) << size;
  const std::pair<size_t, uint8_t> edits[] = {
      {0, 'm'},  // the first word
      {8, 1},    // the luma plane's offset: its samples would lie in the chroma plane, its end past the frame
      {12, 10},  // its bytes: row 2 begins there
      {16, 255},   // its row's bytes
      {16, 0},     // none
      {20, 3},     // its count of rows
      {24, 255},   // of columns
      {27, 255},   // the same, beyond 2^24
      {32, 0},     // row 2 again row 0
      {35, 255},   // a row beyond 2^31
      {48 + 4, 1}  // the chroma plane's bytes: less than a pair
  };
  for (const auto& [at, value] : edits) {
    Bytes edited = bytes;
    edited[at] = value;
    EXPECT_THROW(parse_thin(edited, at == 8 ? 15 : 20), std::runtime_error) << "byte " << at;
  }
}

TEST(Thin, LumaPlanesAreThoseThatTheLibraryTakes) {
  for (const LumaPlane& plane : kLumaPlanes) {
    MorvaleData_t record{};
    record.width = plane.width;
    record.height = plane.height;
    record.stride = plane.stride;
    EXPECT_EQ(luma_bytes(record), plane.bytes) << plane.width << "x" << plane.height << ", " << plane.stride;
  }
}

TEST(Thin, ASampleMayBeAPlanesLast) {
  ThinFrame frame;
  frame.luma = {0, 11, 5, {0, 2}, {0}};
  frame.chroma = {11, 7, 5, {0, 1}, {0}};
  const std::vector<uint8_t> pixels(18);
  take_samples(frame, pixels.data(), pixels.data() + 11);
  EXPECT_NO_THROW(parse_thin(thin_bytes(frame), 18));
  for (ThinPlane ThinFrame::*plane : {&ThinFrame::luma, &ThinFrame::chroma}) {
    ThinFrame shorter = frame;
    --(shorter.*plane).bytes;
    EXPECT_THROW(parse_thin(thin_bytes(shorter), 18), std::runtime_error);
  }
}

/// What is taken from a recorded frame is what was taken from the caller's planes.
TEST(Thin, AWholeRecordingGivesTheSameSamplesAsTheCallersPlanes) {
  struct Case {
    const char* why;
    int32_t width, height, stride;
    ChromaPlace chroma;
  };
  const Case cases[] = {{"packed", 64, 48, 0, ChromaPlace::kFound},
                        {"padded rows", 60, 48, 64, ChromaPlace::kFound},
                        {"chroma inside the luma rows", 60, 40, 33, ChromaPlace::kFound},
                        {"enlarged, the row behind is chroma", 20, 10, 0, ChromaPlace::kBehind},
                        {"enlarged, the row behind is none", 20, 10, 0, ChromaPlace::kApart},
                        {"odd, a stride that is none", 401, 301, -3, ChromaPlace::kApart}};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.why);
    FrameInput input;
    input.record.width = c.width;
    input.record.height = c.height;
    input.record.stride = c.stride;
    input.chroma = c.chroma;
    input.nv21.resize(pixel_bytes(input));
    for (size_t i = 0; i < input.nv21.size(); ++i) input.nv21[i] = static_cast<uint8_t>(i * 31 + i / 251);
    const auto luma_end = input.nv21.begin() + luma_bytes(input.record);
    Bytes chroma(luma_end, input.nv21.end());
    MorvaleData_t record = input.record;
    record.yPlane = record.uvPlane = input.nv21.data();
    if (c.chroma == ChromaPlace::kBehind) record.uvPlane = std::to_address(luma_end);
    if (c.chroma == ChromaPlace::kApart) record.uvPlane = chroma.data();
    const auto taken = morvale::record::thin_frame(record, input, 256);
    const auto from_file = morvale::record::thin_frame(input, 256);
    ASSERT_TRUE(taken && from_file);
    EXPECT_EQ(taken->samples, from_file->samples);
    const Bytes bytes = thin_bytes(*taken);
    EXPECT_NO_THROW(parse_thin(bytes, pixel_bytes(input)));
    FrameInput thick = input;
    thick.nv21 = thick_pixels(*taken, input.nv21.size());
    EXPECT_EQ(morvale::record::thin_frame(thick, 256)->samples, taken->samples) << "put back elsewhere";
  }
  FrameInput none;
  EXPECT_FALSE(morvale::record::thin_frame(none.record, none, 256)) << "no planes";
}

}  // namespace
