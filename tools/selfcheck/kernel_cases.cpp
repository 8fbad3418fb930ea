/// The image kernels: each over the shapes of its group, and each shape over every kind of bytes.
#include <cstring>
#include <span>

#include <morvale/morvale.h>
#include "kernel_list/kernel_list.h"
#include "selfcheck/cases.h"
#include "selfcheck/crash.h"
#include "selfcheck/inputs.h"

namespace morvale::selfcheck {
namespace {

using kernel_list::Arguments;
using kernel_list::Group;
using kernel_list::Kernel;

/// Around every vector width, and one with several blocks and a tail.
constexpr Arguments kSizes[] = {{1, 1},  {2, 2},  {3, 5},  {6, 6},  {7, 2},  {8, 3},   {9, 4},   {15, 2},
                                {16, 8}, {17, 3}, {30, 6}, {31, 3}, {32, 2}, {33, 18}, {47, 2},  {63, 5},
                                {64, 4}, {65, 3}, {66, 8}, {96, 4}, {97, 7}, {127, 2}, {130, 66}};
/// Where every pixel becomes many.
constexpr Arguments kSmallSizes[] = {{1, 1}, {1, 4}, {2, 1},  {2, 2},  {5, 3},
                                     {8, 2}, {9, 5}, {16, 3}, {17, 4}, {33, 6}};

/// Half ratios, 1.5 to 7.5; then whole and odd steps, up and down.
constexpr Arguments kScales[] = {
    {30, 18, 20, 12},  {27, 21, 18, 14},   {18, 27, 12, 18},   {33, 21, 22, 14},   {50, 30, 20, 12},
    {75, 60, 10, 8},   {35, 35, 10, 10},   {300, 30, 200, 20}, {320, 40, 128, 16}, {480, 45, 64, 6},
    {248, 21, 72, 6},  {960, 15, 128, 2},  {1080, 45, 144, 6}, {51, 33, 34, 22},   {64, 48, 40, 30},
    {64, 48, 64, 48},  {100, 75, 64, 48},  {37, 29, 64, 50},   {33, 21, 10, 7},    {200, 20, 77, 9},
    {128, 96, 32, 24}, {96, 72, 32, 24},   {64, 64, 32, 32},   {50, 40, 49, 39},   {16, 16, 64, 64},
    {17, 3, 5, 2},     {30, 20, 20, 10},   {1, 1, 8, 8},       {2, 2, 1, 1},       {300, 8, 100, 4},
    {255, 9, 254, 8},  {640, 20, 257, 16}, {9, 300, 6, 199},   {180, 90, 96, 48},  {41, 13, 0, 5}};

constexpr Arguments kPads[] = {
    {12, 6, 24, 12, 12, 6},   {12, 6, 24, 12, 3, 2},    {16, 9, 32, 16, 16, 4}, {37, 21, 64, 48, 27, 10},
    {48, 64, 64, 64, -16, 0}, {45, 60, 64, 64, -15, 0}, {13, 5, 40, 10, 13, 5}, {64, 36, 64, 64, 0, 28},
    {8, 8, 8, 8, 0, 0},       {20, 4, 20, 8, 0, 4},     {18, 7, 33, 9, 15, 2},  {7, 4, 15, 6, 7, 2},
    {1, 4, 8, 4, 0, 0},       {3, 3, 8, 8, 3, 3},       {24, 8, 24, 8, -9, 0},  {128, 74, 128, 128, 0, 54},
    {97, 18, 130, 20, 33, 2}, {66, 2, 66, 2, 0, 0},     {31, 6, 62, 6, 30, 0},  {9, 1, 64, 64, -55, 0}};

constexpr Arguments enlarged(int width, int height, int factor) {
  return {.width = width, .height = height, .factor = factor};
}
constexpr Arguments kFactors[] = {enlarged(1, 1, 3),  enlarged(2, 3, 1), enlarged(5, 3, 2),
                                  enlarged(9, 4, 3),  enlarged(8, 2, 4), enlarged(16, 3, 5),
                                  enlarged(17, 2, 7), enlarged(7, 5, 8), enlarged(3, 2, 64),
                                  enlarged(4, 3, 33), enlarged(6, 2, 0), enlarged(33, 5, 6)};

constexpr Arguments part(int width, int height, kernel_list::Region region) {
  return {.width = width, .height = height, .region = region};
}
constexpr Arguments kRegions[] = {part(40, 20, {0, 0, 40, 20}), part(40, 20, {3, 5, 9, 4}),
                                  part(40, 20, {39, 19, 1, 1}), part(33, 9, {16, 2, 17, 7}),
                                  part(64, 12, {1, 1, 62, 10}), part(20, 8, {4, 0, 0, 8})};

std::span<const Arguments> shapes_of(const Kernel& kernel) {
  if (kernel.group == Group::kScaled) return kScales;
  if (kernel.group == Group::kPadded) return kPads;
  if (kernel.group == Group::kByFactor) return kFactors;
  if (kernel.group == Group::kRegion) return kRegions;
  if (kernel.ratio.wide >= 4) return kSmallSizes;
  return kSizes;
}

/// Every mode, the results behind each other.
void turn(const Kernel& kernel, const uint8_t* s, uint8_t* d, Arguments a) {
  for (a.mode = 0; a.mode < 4; ++a.mode) kernel.run(s, d + 2 * a.width * a.height * a.mode, a);
}

/// Every other cell is marked, by the bytes of the source.
void blur(const Kernel& kernel, const uint8_t* s, uint8_t* d, Arguments a) {
  static Bytes grid(kBlurGridColumns * 20);
  for (size_t i = 0; i < grid.size(); ++i) grid[i] = s[i] & 1;
  uint16_t weights[41];
  constexpr struct {
    float sigma;
    int radius, bits;
  } kBlurs[] = {{0.8f, 1, 8}, {1.5f, 4, 8}, {2.5f, 5, 14}, {20.0f, 20, 14}, {0.0f, 2, 8}};
  for (const auto& blur : kBlurs) {
    GFilterCreation(blur.sigma, blur.radius, blur.bits, weights);
    a.blur = {grid, weights, blur.radius, blur.bits};
    kernel.run(s, d, a);
    d += a.width * a.height;
  }
}

void run(const Kernel& kernel, const uint8_t* s, uint8_t* d, Arguments a) {
  if (kernel.group == Group::kTurned) return turn(kernel, s, d, a);
  if (kernel.group == Group::kBlurred) return blur(kernel, s, d, a);
  // Rows that lie apart; floats behind the last one, which stay; planes that lie where they like.
  if (kernel.group == Group::kRegion) a.out_width = kernel.ratio.wide * a.region.width + 3;
  constexpr float kBehind[] = {-1.0f, -1.0f, -1.0f};
  if (kernel.gives == kernel_list::Layout::kHsv)
    std::memcpy(d + int{sizeof kBehind} * a.width * a.height, kBehind, sizeof kBehind);
  if (kernel.name == "resize_NV21_opt")
    return resize_NV21_opt(s + 9, s, d, a.width, a.height, a.out_width, a.out_height);
  kernel.run(s, d, a);
}

/// What lies around the pictures is part of the input: kernels may read and write a little of it.
constexpr size_t kAround = 8192;
constexpr size_t kRoom = size_t{160} << 10;

uint64_t digest_of(const Kernel& kernel) {
  static const Bytes sources[] = {bytes_of(kKinds[0], 2 * kAround + kRoom, 1),
                                  bytes_of(kKinds[1], 2 * kAround + kRoom, 2),
                                  bytes_of(kKinds[2], 2 * kAround + kRoom, 3)};
  static Bytes target;
  case_under_way = kernel.name.data();
  Digest digest;
  for (const Arguments& shape : shapes_of(kernel)) {
    for (const Bytes& source : sources) {
      target = sources[0];
      run(kernel, source.data() + kAround, target.data() + kAround, shape);
      digest.add(target.data(), target.size());
    }
  }
  return digest.value();
}

/// Large images are written around the caches.
uint64_t digest_of_large() {
  constexpr int kWidth = 2056, kHeight = 1368;
  const Bytes frame = nv21_frame(kWidth, kHeight, 4);
  Bytes rgb(size_t{3} * kWidth * kHeight);
  NV21toRGB(frame.data(), frame.data() + kWidth * kHeight, rgb.data(), kWidth, kHeight);
  Digest digest;
  digest.add(rgb.data(), rgb.size());
  return digest.value();
}

}  // namespace

void measure_kernels(Figures& figures) {
  for (const Kernel& kernel : kernel_list::kKernels)
    figures.push_back({std::string(kernel.name), digest_of(kernel)});
  figures.push_back({"NV21toRGB of a large frame", digest_of_large()});
}

}  // namespace morvale::selfcheck
