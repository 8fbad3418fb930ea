// Quarter and half turns: small pictures by hand, then every size around an 8 x 8 tile pixel by pixel.
#include <morvale/imgproc/rotate.h>

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "fakes/guarded_bytes.h"

namespace {

using namespace guarded;
using Rotate = void (*)(const uint8_t*, uint8_t*, int, int, int);

const std::string kHalfTurnLine = "roatetasdf asd 180.....................................................\n";

/// Where a pixel goes: one mapping per kind of turn, named after what the eye sees.
enum class Turn { kClockwise, kClockwiseMirrored, kCounterClockwise, kMirror, kHalf };

struct Position {
  int column, row;
};

Position turned(Turn turn, int x, int y, int width, int height) {
  switch (turn) {
    case Turn::kClockwise:
      return {height - 1 - y, x};
    case Turn::kClockwiseMirrored:
      return {height - 1 - y, width - 1 - x};
    case Turn::kCounterClockwise:
      return {y, width - 1 - x};
    case Turn::kMirror:
      return {x, height - 1 - y};
    case Turn::kHalf:
      return {width - 1 - x, height - 1 - y};
  }
  return {};
}

struct Member {
  const char* name;
  Rotate rotate;
  bool nv21;
  Turn mode0, mode2, other;
  bool speaks;
};
const Member kMembers[] = {
    {"rotate_y", rotate_y, false, Turn::kClockwiseMirrored, Turn::kCounterClockwise, Turn::kMirror, false},
    {"rotate_y_opt", rotate_y_opt, false, Turn::kClockwiseMirrored, Turn::kCounterClockwise, Turn::kHalf,
     true},
    {"rotate_NV21", rotate_NV21, true, Turn::kClockwise, Turn::kCounterClockwise, Turn::kHalf, false},
    {"rotate_NV21_opt", rotate_NV21_opt, true, Turn::kClockwise, Turn::kCounterClockwise, Turn::kHalf, false},
};

Turn turn_of(const Member& k, int mode) { return mode == 0 ? k.mode0 : mode == 2 ? k.mode2 : k.other; }

/// Runs one turn and returns what it wrote to standard output.
std::string run(const Member& k, const uint8_t* src, uint8_t* dst, int width, int height, int mode) {
  testing::internal::CaptureStdout();
  k.rotate(src, dst, width, height, mode);
  return testing::internal::GetCapturedStdout();
}

/// Bytes of an image with odd sizes: whole chroma rows, and the byte that a last odd pair reaches past them.
size_t image_size(const Member& k, int width, int height) {
  return static_cast<size_t>(width * height + (k.nv21 ? (height + 1) / 2 * width + width % 2 : 0));
}

Bytes turned_by_the_rule(const Member& k, Turn turn, const Bytes& src, Bytes dst, int width, int height) {
  const int dst_width = turn == Turn::kMirror || turn == Turn::kHalf ? width : height;
  const int pixels = width * height;
  const auto copy = [&](int to, int from) {
    dst.at(static_cast<size_t>(to)) = src.at(static_cast<size_t>(from));
  };
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x) {
      const auto [column, row] = turned(turn, x, y, width, height);
      copy(row * dst_width + column, y * width + x);
      if (!k.nv21) continue;
      const int from = pixels + y / 2 * width + (x & ~1);
      const int to = pixels + row / 2 * dst_width + (column & ~1);
      copy(to, from);
      copy(to + 1, from + 1);
    }
  return dst;
}

TEST(Rotate, EverySizeAndModeMatchesTheMapping) {
  uint32_t seed = 1;
  for (const Member& k : kMembers)
    for (const int mode : {0, 2, 1, -1})
      for (const int width : {1, 2, 3, 7, 8, 9, 10, 15, 16, 17, 24, 31, 33, 40})
        for (const int height : {1, 2, 3, 4, 7, 8, 9, 16, 17, 24}) {
          const Edge edge = kEdges[++seed % 2];
          SCOPED_TRACE(std::string(k.name) + ", mode " + std::to_string(mode) + ", " + std::to_string(width) +
                       "x" + std::to_string(height) + ", seed " + std::to_string(seed));
          const Turn turn = turn_of(k, mode);
          const bool quarter = mode == 0 || mode == 2;
          const Bytes src = random_bytes(image_size(k, width, height), seed);
          const size_t room = quarter ? image_size(k, height, width) : image_size(k, width, height);
          const Bytes held = random_bytes(room, seed + 5000);
          GuardedBytes guarded_src(src, edge);
          CanaryBytes dst(held);
          EXPECT_EQ(k.speaks && !quarter ? kHalfTurnLine : "",
                    run(k, guarded_src.data(), dst.data(), width, height, mode));
          expect_same(turned_by_the_rule(k, turn, src, held, width, height), dst.bytes(),
                      static_cast<size_t>(quarter ? height : width), "");
        }
}

TEST(Rotate, PicturesByHand) {
  const char* const plane = "1 2 3  4 5 6";
  // Four V,U pairs, each the colour of a quarter of the picture.
  const char* const nv21 = "1 2 3 4  5 6 7 8  9 10 11 12  13 14 15 16  21 22 31 32  41 42 51 52";
  const char* const clockwise = "13 9 5 1  14 10 6 2  15 11 7 3  16 12 8 4  41 42 21 22  51 52 31 32";
  const char* const counter = "4 8 12 16  3 7 11 15  2 6 10 14  1 5 9 13  31 32 51 52  21 22 41 42";
  const char* const half = "16 15 14 13  12 11 10 9  8 7 6 5  4 3 2 1  51 52 41 42  31 32 21 22";
  struct {
    const Member& k;
    int mode;
    const char *expected, *why;
  } const cases[] = {
      {kMembers[0], 0, "6 3 5 2 4 1", "clockwise and mirrored: the top left lands at the bottom right"},
      {kMembers[0], 2, "3 6 2 5 1 4", "counter-clockwise"},
      {kMembers[0], 1, "4 5 6 1 2 3", "a mirror, not a half turn"},
      {kMembers[0], 180, "4 5 6 1 2 3", "the mode is no angle"},
      {kMembers[1], 0, "6 3 5 2 4 1", "as rotate_y"},
      {kMembers[1], 2, "3 6 2 5 1 4", "as rotate_y"},
      {kMembers[1], 1, "6 5 4 3 2 1", "a half turn, unlike rotate_y"},
      {kMembers[2], 0, clockwise, "not mirrored, unlike rotate_y; pairs keep their order"},
      {kMembers[2], 2, counter, "pairs move with their pixels"},
      {kMembers[2], 1, half, "pairs are not reversed"},
      {kMembers[3], 0, clockwise, "as rotate_NV21"},
      {kMembers[3], 2, counter, "as rotate_NV21"},
      {kMembers[3], 3, half, "as rotate_NV21"},
  };
  for (const auto& c : cases) {
    const Bytes expected = bytes_of(c.expected);
    CanaryBytes dst(expected.size());
    run(c.k, bytes_of(c.k.nv21 ? nv21 : plane).data(), dst.data(), c.k.nv21 ? 4 : 3, c.k.nv21 ? 4 : 2,
        c.mode);
    expect_same(expected, dst.bytes(), 4, std::string(c.k.name) + ": " + c.why);
  }
}

TEST(Rotate, SizesBelowOneWriteNothing) {
  const Bytes src(64, 77), held = random_bytes(64, 3);
  CanaryBytes dst(held);
  for (const Member& k : kMembers)
    for (const int mode : {0, 1, 2})
      for (const auto& [width, height] : kEmptySizes) run(k, src.data(), dst.data(), width, height, mode);
  expect_same(held, dst.bytes(), 8, "destination");
}

}  // namespace
