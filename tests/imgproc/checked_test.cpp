// The checked kernels. What each call requires is found by shrinking its buffers until it refuses; that these
// sizes are right is shown by guard pages (not too small) and by the last byte's effect (not too large).
#include <morvale/checked.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <memory>
#include <ostream>
#include <span>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "fakes/guarded_bytes.h"

namespace morvale::checked {
void PrintTo(Status status, std::ostream* out) { *out << message(status); }
}  // namespace morvale::checked

namespace {

namespace checked = morvale::checked;
using checked::Status;
using guarded::Edge;
using guarded::GuardedBytes;
using guarded::kEdges;
using guarded::random_bytes;
using Bytes = std::vector<uint8_t>;
using Source = std::span<const uint8_t>;
using Target = std::span<uint8_t>;
using Buffers = std::vector<Target>;  // the sources, then the destinations

/// One kernel with one set of arguments.
struct Case {
  std::string name;
  size_t sources, destinations;
  std::function<Status(const Buffers&)> checked;
  std::function<void(const Buffers&)> plain;
  size_t generous = size_t{1} << 14;  // bytes that every buffer may have to spare
};

template <size_t kSources, size_t kDestinations, class Checked, class Plain, class... Arguments>
Case make_case(std::string name, Checked check, Plain plain, Arguments... arguments) {
  (name.append(1, ' ').append(std::to_string(arguments)), ...);
  const auto with_spans = [=]<size_t... kIndex>(const Buffers& b, std::index_sequence<kIndex...>) {
    return check(b[kIndex]..., arguments...);
  };
  const auto with_pointers = [=]<size_t... kIndex>(const Buffers& b, std::index_sequence<kIndex...>) {
    plain(b[kIndex].data()..., arguments...);
  };
  const std::make_index_sequence<kSources + kDestinations> all;
  return {std::move(name), kSources, kDestinations, [=](const Buffers& b) { return with_spans(b, all); },
          [=](const Buffers& b) { with_pointers(b, all); }};
}

std::vector<Bytes> initial_contents(const Case& c) {
  std::vector<Bytes> contents;
  for (uint32_t i = 0; i < c.sources + c.destinations; ++i) contents.push_back(random_bytes(c.generous, i));
  return contents;
}

Buffers spans(std::vector<Bytes>& contents) { return {contents.begin(), contents.end()}; }

/// The smallest size of each buffer that the call accepts, all others being generous.
std::vector<size_t> required_sizes(const Case& c) {
  std::vector<Bytes> scratch = initial_contents(c);
  std::vector<size_t> required;
  for (size_t i = 0; i < scratch.size(); ++i) {
    size_t refused = 0, accepted = c.generous + 1;  // every size below `refused` is
    while (refused < accepted) {
      const size_t middle = (refused + accepted) / 2;
      Buffers buffers = spans(scratch);
      if (middle <= c.generous) buffers[i] = buffers[i].first(middle);
      if (middle > c.generous || c.checked(buffers) == Status::kOk) {
        accepted = middle;
      } else {
        refused = middle + 1;
      }
    }
    EXPECT_LE(accepted, c.generous) << "no size of buffer " << i << " is accepted";
    required.push_back(std::min(accepted, c.generous));
  }
  return required;
}

void expect_same_pixels_between_guard_pages(const Case& c, const std::vector<size_t>& required) {
  const std::vector<Bytes> contents = initial_contents(c);
  std::vector<Bytes> expected = contents;
  c.plain(spans(expected));
  for (const Edge edge : kEdges) {
    std::vector<std::unique_ptr<GuardedBytes>> guards;
    Buffers buffers;
    for (size_t i = 0; i < contents.size(); ++i) {
      const auto end = contents[i].begin() + static_cast<ptrdiff_t>(required[i]);
      guards.push_back(std::make_unique<GuardedBytes>(Bytes(contents[i].begin(), end), edge));
      buffers.push_back(required[i] == 0 ? Target()
                                         : Target(guards[i]->data(), required[i]));  // null will do
    }
    EXPECT_EQ(c.checked(buffers), Status::kOk);
    for (size_t i = c.sources; i < contents.size(); ++i) {
      const auto end = expected[i].begin() + static_cast<ptrdiff_t>(required[i]);
      guarded::expect_same(Bytes(expected[i].begin(), end), buffers[i], 1, "destination");
    }
  }
}

void expect_refusal_one_byte_below(const Case& c, const std::vector<size_t>& required) {
  const std::vector<Bytes> contents = initial_contents(c);
  for (size_t i = 0; i < contents.size(); ++i) {
    if (required[i] == 0) continue;
    std::vector<Bytes> held = contents;
    Buffers buffers = spans(held);
    buffers[i] = buffers[i].first(required[i] - 1);
    EXPECT_EQ(c.checked(buffers), i < c.sources ? Status::kSourceTooSmall : Status::kDestinationTooSmall);
    EXPECT_EQ(held, contents) << "written in spite of the refusal";
  }
}

/// Changes the last required byte of each buffer: the plain kernel must overwrite it or let it show
/// elsewhere.
void expect_last_byte_matters(const Case& c, const std::vector<size_t>& required) {
  std::vector<Bytes> before = initial_contents(c);
  c.plain(spans(before));
  for (size_t i = 0; i < before.size(); ++i) {
    if (required[i] == 0) continue;
    const size_t last = required[i] - 1;
    std::vector<Bytes> after = initial_contents(c);
    after[i][last] ^= 0xFF;
    c.plain(spans(after));
    const bool overwritten = after[i][last] == before[i][last];
    after[i][last] = before[i][last];
    EXPECT_TRUE((i >= c.sources && overwritten) || after != before)
        << "nobody needs the last byte of buffer " << i;
  }
}

enum class SourceEnd { kMatters, kMayBeIdle };

void expect_exact_reach(const Case& c, SourceEnd end = SourceEnd::kMatters) {
  SCOPED_TRACE(c.name);
  std::vector<size_t> required = required_sizes(c);
  if (testing::Test::HasFailure()) return;
  expect_same_pixels_between_guard_pages(c, required);
  expect_refusal_one_byte_below(c, required);
  if (end == SourceEnd::kMayBeIdle) std::fill_n(required.begin(), c.sources, 0);
  expect_last_byte_matters(c, required);
}

// Around the blocks of eight, odd and even, and the sizes that have no pair, no chroma row or no pixel.
constexpr std::initializer_list<std::pair<int, int>> kSizes = {
    {0, 0}, {0, 5}, {5, 0}, {1, 1}, {1, 2}, {2, 1}, {1, 4},  {2, 2},  {3, 3},  {4, 4},  {5, 3},   {6, 6},
    {7, 4}, {7, 7}, {8, 2}, {8, 5}, {9, 6}, {9, 9}, {12, 8}, {13, 7}, {16, 4}, {17, 9}, {24, 16}, {31, 10}};

TEST(CheckedColor, EverySizeNeedsWhatTheKernelTouches) {
  for (const auto& [w, h] : kSizes) {
    expect_exact_reach(make_case<2, 1>("NV21toRGB", checked::NV21toRGB, NV21toRGB, w, h));
    expect_exact_reach(make_case<1, 1>("NV21toBGR", checked::NV21toBGR, NV21toBGR, w, h));
    expect_exact_reach(make_case<1, 3>(
        "NV21toBGR_planar",
        [](Source src, Target b, Target g, Target r, int width, int height) {
          return checked::NV21toBGR_planar(src, {b, g, r}, width, height);
        },
        [](const uint8_t* src, uint8_t* b, uint8_t* g, uint8_t* r, int width, int height) {
          uint8_t* const planes[3] = {b, g, r};
          NV21toBGR_planar(src, planes, width, height);
        },
        w, h));
    expect_exact_reach(make_case<1, 2>("RGBtoNV21", checked::RGBtoNV21, RGBtoNV21, w, h));
    expect_exact_reach(make_case<1, 1>("BGRtoNV21", checked::BGRtoNV21, BGRtoNV21, w, h));
    expect_exact_reach(make_case<1, 1>("BGR2GRAY", checked::BGR2GRAY, BGR2GRAY, w, h));
  }
}

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

TEST(CheckedPad, EveryMarginNeedsWhatTheKernelTouches) {
  const Padding kPaddings[] = {
      {16, 8, 16, 8, 0, 0},    // none
      {16, 8, 24, 12, 8, 4},   // whole blocks
      {16, 8, 32, 16, 16, 8},  // full
      {16, 8, 21, 8, 5, 0},    // the tail alone
      {12, 6, 15, 6, 3, 0},    // the tail begins inside the picture and mirrors from beyond the margin
      {12, 6, 18, 8, 6, 2},    // no block fits, the tail reads on from its own columns
      {20, 4, 24, 4, 4, 0},    // a block that overruns the margin and the last row
      {20, 4, 24, 7, 4, 3},    // the same with rows below to take it
      {13, 7, 17, 9, 4, 2},    // odd sizes
      {17, 5, 17, 5, 0, 0},    // an odd width puts a tail on the picture without any margin
      {17, 3, 30, 3, 13, 0},   // odd height, no margin below
      {24, 8, 16, 8, -8, 0},   // a margin that cuts the picture
      {24, 8, 20, 8, -4, 0},   // the same within a block of eight
      {30, 7, 13, 9, -17, 2},  // far to the left, odd height
      {3, 4, 3, 4, 0, 0},      // narrower than a block
      {1, 4, 1, 4, 0, 0},      // no pair
      {1, 4, 2, 6, 1, 2},      // no pair, margins of what was there
      {16, 7, 16, 8, 0, -3},   // a bottom margin below 0 is none
      {0, 0, 16, 16, 0, 0},   {2, 0, 8, 8, 2, 0}};
  for (const auto& [name, check, plain] : kPadKernels) {
    for (const Padding& p : kPaddings) {
      // The margin's tail may overwrite the last pair, and a picture of one column has none.
      const bool idle = ((p.width + p.right) & ~7) < p.width - 1 || p.width == 1;
      const SourceEnd end = idle ? SourceEnd::kMayBeIdle : SourceEnd::kMatters;
      expect_exact_reach(make_case<1, 1>(name, check, plain, p.width, p.height, p.out_width, p.out_height,
                                         p.right, p.bottom),
                         end);
    }
  }
}

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

TEST(CheckedScaling, FixedRatiosNeedWhatTheKernelTouches) {
  for (const auto& [name, check, plain] : kFixedScalings) {
    for (const auto& [w, h] : kSizes) {
      // A shrunk picture without chroma still has its luma plane, whose last rows may not be sampled.
      const bool shrinks = std::string(name).ends_with("down");
      const bool idle = shrinks && (w < 6 || h < 6);
      expect_exact_reach(make_case<1, 1>(name, check, plain, w, h),
                         idle ? SourceEnd::kMayBeIdle : SourceEnd::kMatters);
    }
  }
  for (const int factor : {1, 2, 3, 5, 7, 64}) {
    Case c = make_case<1, 1>("resize_y", checked::resize_y, resize_y, 5, 3, factor);
    c.generous = 1 << 16;
    expect_exact_reach(c);
  }
}

struct Scaling {
  int src_width, src_height, dst_width, dst_height;
};

void expect_exact_scaling(const Scaling& s, SourceEnd end) {
  Case cases[] = {make_case<2, 1>("resize_NV21_opt", checked::resize_NV21_opt, resize_NV21_opt, s.src_width,
                                  s.src_height, s.dst_width, s.dst_height),
                  make_case<1, 1>("resize_NV21", checked::resize_NV21, resize_NV21, s.src_width, s.src_height,
                                  s.dst_width, s.dst_height),
                  make_case<1, 1>("resize_Y_1", checked::resize_Y_1, resize_Y_1, s.src_width, s.src_height,
                                  s.dst_width, s.dst_height)};
  for (Case& c : cases) {
    if (s.src_width > 100) c.generous = size_t{1} << 18;
    expect_exact_reach(c, end);
  }
}

TEST(CheckedScaling, AnySizeNeedsWhatTheKernelTouches) {
  // Half ratios weigh all neighbours alike and whole ones have none: the last byte read shows.
  const Scaling kPlainWeights[] = {
      {16, 8, 8, 4}, {7, 5, 7, 5},   {12, 6, 8, 4}, {12, 9, 8, 6},        {15, 15, 10, 10},    {20, 20, 8, 8},
      {3, 3, 2, 2},  {6, 7, 12, 14}, {2, 2, 4, 4},  {387, 387, 258, 258}, {388, 388, 258, 258}};
  for (const Scaling& s : kPlainWeights) expect_exact_scaling(s, SourceEnd::kMatters);
  // Elsewhere a neighbour's weight may be too small to show, or only a luma row behind the image, which
  // chroma overwrites, has it; and an empty picture needs nothing.
  const Scaling kOthers[] = {{16, 8, 5, 3},        {17, 9, 8, 4}, {16, 8, 31, 15}, {7, 5, 9, 11},
                             {5, 7, 14, 3},        {1, 1, 1, 1},  {1, 1, 3, 2},    {10, 10, 3, 1},
                             {194, 194, 129, 129}, {12, 6, 8, 6}, {12, 6, 12, 4},  {3, 1, 7, 1},
                             {0, 0, 0, 0},         {8, 8, 0, 5},  {8, 8, 5, 0}};
  for (const Scaling& s : kOthers) expect_exact_scaling(s, SourceEnd::kMayBeIdle);
}

TEST(CheckedScaling, RegionsNeedWhatTheKernelTouches) {
  const std::array<int, 6> kRegions[] = {{20, 0, 0, 20, 5, 160}, {20, 3, 2, 7, 4, 60}, {9, 8, 3, 1, 1, 11},
                                         {20, 19, 0, 1, 6, 8},   {20, 5, 5, 0, 3, 0},  {20, 5, 5, 3, 0, 24}};
  for (const auto& [stride, x, y, w, h, out_stride] : kRegions) {
    for (const auto& [name, check, plain] :
         {std::make_tuple("hori", checked::resize_y_8x_up_RR_hori, resize_y_8x_up_RR_hori),
          std::make_tuple("vert", checked::resize_y_8x_up_RR_vert, resize_y_8x_up_RR_vert)})
      expect_exact_reach(make_case<1, 1>(name, check, plain, stride, x, y, w, h, out_stride));
  }
}

TEST(CheckedRotate, EverySizeAndModeNeedsWhatTheKernelTouches) {
  testing::internal::CaptureStdout();  // one of them speaks
  for (const auto& [name, check, plain] :
       {std::make_tuple("rotate_y", checked::rotate_y, rotate_y),
        std::make_tuple("rotate_y_opt", checked::rotate_y_opt, rotate_y_opt),
        std::make_tuple("rotate_NV21", checked::rotate_NV21, rotate_NV21),
        std::make_tuple("rotate_NV21_opt", checked::rotate_NV21_opt, rotate_NV21_opt)}) {
    for (const auto& [w, h] : kSizes) {
      for (const int mode : {0, 1, 2}) expect_exact_reach(make_case<1, 1>(name, check, plain, w, h, mode));
    }
  }
  testing::internal::GetCapturedStdout();
}

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
    for (const auto& [w, h] : kSizes) {
      expect_exact_reach(
          make_case<2, 1>(
              name,
              [&, run = check](Source src, Source grid, Target dst, int width, int height) {
                return run(src, dst, grid, width, height, weights, kRadius, kBits);
              },
              [&, run = plain](const uint8_t* src, const uint8_t* grid, uint8_t* dst, int width, int height) {
                run(src, dst, grid, width, height, weights.data(), kRadius, kBits);
              },
              w, h),
          SourceEnd::kMayBeIdle);  // the grid's marks are random, any nonzero byte is one
    }
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
