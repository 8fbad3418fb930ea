/// What the checked kernels refuse. How many bytes each asks for is tests/kernels/reach_test.cpp's matter.
#include <morvale/checked.h>

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>
#include <ostream>
#include <span>
#include <tuple>
#include <vector>

#include "fakes/guarded_bytes.h"

namespace morvale::checked {
void PrintTo(Status status, std::ostream* out) { *out << message(status); }
}  // namespace morvale::checked

namespace {

namespace checked = morvale::checked;
using checked::Status;
using guarded::random_bytes;
using Bytes = std::vector<uint8_t>;
using Source = std::span<const uint8_t>;
using Target = std::span<uint8_t>;

TEST(CheckedColor, HsvCountsFloats) {
  const Bytes bgr = random_bytes(3 * 5 * 3, 1);
  std::vector<float> expected(bgr.size()), hsv(bgr.size(), -1.0f);
  Bytes writable = bgr;
  BGR2HSV(writable.data(), expected.data(), 5, 3);
  const std::span<float> out(hsv);
  EXPECT_EQ(checked::BGR2HSV(Source(bgr).first(44), out, 5, 3), Status::kSourceTooSmall);
  EXPECT_EQ(checked::BGR2HSV(bgr, out.first(44), 5, 3), Status::kDestinationTooSmall);
  EXPECT_EQ(hsv, std::vector<float>(bgr.size(), -1.0f));
  EXPECT_EQ(checked::BGR2HSV(bgr, out, 5, 3), Status::kOk);
  EXPECT_EQ(hsv, expected);
}

struct Padding {
  int width, height, out_width, out_height, right, bottom;
};

using PadCheck = Status (*)(Source, Target, int, int, int, int, int, int);
using PadPlain = int (*)(const uint8_t*, uint8_t*, int, int, int, int, int, int);
const std::tuple<const char*, PadCheck, PadPlain> kPadKernels[] = {
    {"NV21toRGB_pad", checked::NV21toRGB_pad, NV21toRGB_pad},
    {"NV21toBGR_pad", checked::NV21toBGR_pad, NV21toBGR_pad},
    {"NV12toRGB_pad", checked::NV12toRGB_pad, NV12toRGB_pad},
    {"NV21toBGR_pad_lsi", checked::NV21toBGR_pad_lsi, NV21toBGR_pad_lsi}};

TEST(CheckedPad, NothingBeforeTheImageCanBeAllowed) {
  const Padding kPaddings[] = {
      {12, 8, 24, 8, 12, 0},  // the second block's last column, 27, mirrors column -4
      {4, 8, 8, 8, 4, 0},     // the only block's last column, 11, mirrors column -4
      {16, 8, 33, 8, 17, 0},  // a margin wider than the picture
      {10, 8, 21, 8, 11, 0},  // the same where the planes' tail would stay inside
      {16, 8, 16, 17, 0, 9},  // higher than the picture
      {8, 8, 4, 8, -12, 0},   // a tail that ends left of the row
      {8, 1, 8, 1, 0, 0},     // a single row, to be copied from the one above it
      {-2, 8, 8, 8, 0, 0},
      {8, -2, 8, 8, 0, 0},
      {8, 8, -8, 8, 0, 0},
      {8, 8, 8, 8, -(1 << 25), 0},
      {8, 8, 8, 8, 0, std::numeric_limits<int>::min()}};
  const Bytes src(4096), held = random_bytes(4096, 1);
  for (const auto& [name, check, plain] : kPadKernels) {
    for (const Padding& p : kPaddings) {
      Bytes dst = held;
      EXPECT_EQ(check(src, dst, p.width, p.height, p.out_width, p.out_height, p.right, p.bottom),
                Status::kBadSize)
          << name << " " << p.width << "x" << p.height << " margins " << p.right << ", " << p.bottom;
      EXPECT_EQ(dst, held);
    }
  }
  Bytes dst(4096);
  EXPECT_EQ(checked::NV21toBGR_pad_lsi(src, dst, 8, 2, 8, -2, 0, 0), Status::kBadSize);
  EXPECT_EQ(checked::NV21toRGB_pad(src, dst, 8, 2, 8, -2, 0, 0), Status::kOk) << "it ignores outHeight";
}

using PlaneCheck = Status (*)(Source, Target, int, int);
using PlanePlain = void (*)(const uint8_t*, uint8_t*, int, int);
const std::tuple<const char*, PlaneCheck, PlanePlain> kFixedScalings[] = {
    {"resize_NV21_2x_up", checked::resize_NV21_2x_up, resize_NV21_2x_up},
    {"resize_NV21_2x_down", checked::resize_NV21_2x_down, resize_NV21_2x_down},
    {"resize_NV21_3x_down", checked::resize_NV21_3x_down, resize_NV21_3x_down},
    {"resize_y_2x_up", checked::resize_y_2x_up, resize_y_2x_up},
    {"resize_y_4x_up", checked::resize_y_4x_up, resize_y_4x_up},
    {"resize_y_6x_up", checked::resize_y_6x_up, resize_y_6x_up}};

TEST(CheckedBlur, PassesNeedPlanesGridAndWeights) {
  constexpr int kRadius = 3, kBits = 14;
  std::vector<uint16_t> weights(2 * kRadius + 1);
  EXPECT_EQ(checked::GFilterCreation(1.5f, kRadius, kBits, std::span(weights).first(6)),
            Status::kDestinationTooSmall);
  EXPECT_EQ(checked::GFilterCreation(1.5f, 128, kBits, weights), Status::kBadSize);
  EXPECT_EQ(checked::GFilterCreation(1.5f, kRadius, 9, weights), Status::kBadSize);
  EXPECT_EQ(weights, std::vector<uint16_t>(7, 0));
  ASSERT_EQ(checked::GFilterCreation(1.5f, kRadius, kBits, weights), Status::kOk);
  std::vector<uint16_t> plain_weights(weights.size());
  GFilterCreation(1.5f, kRadius, kBits, plain_weights.data());
  EXPECT_EQ(weights, plain_weights);

  for (const auto& [name, check, plain] :
       {std::make_tuple("hori", checked::GaussianBlur_Grid_Hori, GaussianBlur_Grid_Hori),
        std::make_tuple("vert", checked::GaussianBlur_Grid_Vert, GaussianBlur_Grid_Vert)}) {
    Bytes picture(64), out(64), grid(1, 1);
    EXPECT_EQ(check(picture, out, grid, 8, 8, std::span(weights).first(6), kRadius, kBits),
              Status::kSourceTooSmall);
    EXPECT_EQ(check(picture, out, grid, 4801, 8, weights, kRadius, kBits), Status::kBadSize);
    EXPECT_EQ(check(picture, out, grid, 8, 8, weights, -1, kBits), Status::kBadSize);
    EXPECT_EQ(check(picture, out, grid, 8, 8, weights, kRadius, 10), Status::kBadSize);
  }
}

TEST(Checked, ArgumentsThatNobodyCanMeanAreRefused) {
  const Bytes src(4096);
  Bytes dst(4096);
  for (const auto& [name, check, plain] : kFixedScalings) {
    EXPECT_EQ(check(src, dst, -1, 4), Status::kBadSize) << name;
    EXPECT_EQ(check(src, dst, 4, -1), Status::kBadSize) << name;
  }
  for (const PlaneCheck check :
       {PlaneCheck{checked::NV21toBGR}, PlaneCheck{checked::BGRtoNV21}, PlaneCheck{checked::BGR2GRAY}})
    EXPECT_EQ(check(src, dst, -8, 8), Status::kBadSize);
  EXPECT_EQ(checked::NV21toRGB(src, src, dst, 8, -8), Status::kBadSize);
  EXPECT_EQ(checked::NV21toBGR_planar(src, {dst, dst, dst}, 8, -8), Status::kBadSize);
  EXPECT_EQ(checked::RGBtoNV21(src, dst, dst, -8, -8), Status::kBadSize);
  EXPECT_EQ(checked::rotate_y(src, dst, -8, 8, 0), Status::kBadSize);
  EXPECT_EQ(checked::rotate_NV21(src, dst, 8, -8, 0), Status::kBadSize);
  EXPECT_EQ(checked::resize_y(src, dst, 4, 4, 0), Status::kBadSize);
  EXPECT_EQ(checked::resize_y(src, dst, 4, 4, 65), Status::kBadSize);
  EXPECT_EQ(checked::resize_NV21(src, dst, 8, 0, 4, 4), Status::kBadSize);
  EXPECT_EQ(checked::resize_NV21_opt(src, src, dst, 8, 8, 4, -4), Status::kBadSize);
  EXPECT_EQ(checked::resize_Y_1(src, dst, 0, 8, 4, 4), Status::kBadSize);
  EXPECT_EQ(checked::resize_y_8x_up_RR_hori(src, dst, 16, -1, 1, 4, 4, 32), Status::kBadSize);
  EXPECT_EQ(checked::resize_y_8x_up_RR_hori(src, dst, 16, 13, 0, 4, 4, 32), Status::kBadSize);
  EXPECT_EQ(checked::resize_y_8x_up_RR_hori(src, dst, 16, 0, 0, 4, 4, 31), Status::kBadSize);
  EXPECT_EQ(checked::resize_y_8x_up_RR_vert(src, dst, 16, 0, 0, 4, 4, 3), Status::kBadSize);
}

TEST(Checked, HugeSizesNeitherWrapNorPass) {
  const Bytes src(64);
  Bytes dst(64);
  constexpr int kMost = checked::kSizeEnd - 1, kScaledMost = checked::kScaledSizeEnd - 1;
  constexpr int kInt = std::numeric_limits<int>::max();
  for (const auto& [name, check, plain] : kFixedScalings) {
    EXPECT_EQ(check(src, dst, kMost, kMost), Status::kSourceTooSmall) << name;
    EXPECT_EQ(check(src, dst, kMost + 1, 0), Status::kBadSize) << name;
    EXPECT_EQ(check(src, dst, 1, kInt), Status::kBadSize) << name;
  }
  EXPECT_EQ(checked::NV21toBGR(src, dst, kMost, kMost), Status::kSourceTooSmall);
  EXPECT_EQ(checked::resize_y(src, dst, kMost, kMost, 64), Status::kSourceTooSmall);
  EXPECT_EQ(checked::resize_Y_1(src, dst, kScaledMost, kScaledMost, 1, 1), Status::kOk)
      << "it reads one byte";
  EXPECT_EQ(checked::resize_Y_1(src, dst, 1, 1, kScaledMost, kScaledMost), Status::kDestinationTooSmall);
  EXPECT_EQ(checked::resize_Y_1(src, dst, kScaledMost + 1, 1, 1, 1), Status::kBadSize);
  EXPECT_EQ(checked::resize_NV21(src, dst, kScaledMost, kScaledMost, kScaledMost, kScaledMost),
            Status::kSourceTooSmall);
  EXPECT_EQ(checked::NV21toRGB_pad(src, dst, kMost, kMost, kMost, 0, kMost, kMost), Status::kBadSize);
  EXPECT_EQ(checked::NV21toRGB_pad(src, dst, kMost, kMost, kMost, 0, 8, kMost), Status::kSourceTooSmall);
  EXPECT_EQ(checked::NV21toRGB_pad(src, dst, kInt, kInt, kInt, kInt, kInt, kInt), Status::kBadSize);
  EXPECT_EQ(checked::resize_y_8x_up_RR_hori(src, dst, kMost, 0, kMost, kMost, kMost, kMost),
            Status::kBadSize);
  EXPECT_EQ(checked::resize_y_8x_up_RR_vert(src, dst, kMost, 0, kMost, kMost, kMost, kMost),
            Status::kSourceTooSmall);
}

}  // namespace
