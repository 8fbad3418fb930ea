/// The image kernels: each over a list of shapes, and each shape over every kind of bytes.
#include <algorithm>
#include <cstdio>
#include <span>

#include <morvale/morvale.h>
#include "selfcheck/cases.h"
#include "selfcheck/crash.h"
#include "selfcheck/inputs.h"

namespace morvale::selfcheck {
namespace {

using In = const uint8_t*;
using Out = uint8_t*;

/// Width and height of the source, then what the kernel asks for besides.
struct Shape {
  int w, h, a = 0, b = 0, c = 0, d = 0;
};

/// Around every vector width, and one with several blocks and a tail.
constexpr Shape kSizes[] = {{1, 1},  {2, 2},  {3, 5},  {6, 6},  {7, 2},  {8, 3},   {9, 4},   {15, 2},
                            {16, 8}, {17, 3}, {30, 6}, {31, 3}, {32, 2}, {33, 18}, {47, 2},  {63, 5},
                            {64, 4}, {65, 3}, {66, 8}, {96, 4}, {97, 7}, {127, 2}, {130, 66}};
/// Where every pixel becomes many.
constexpr Shape kSmallSizes[] = {{1, 1}, {1, 4}, {2, 1},  {2, 2},  {5, 3},
                                 {8, 2}, {9, 5}, {16, 3}, {17, 4}, {33, 6}};

/// a, b: width and height of the result. Half ratios, 1.5 to 7.5; then whole and odd steps, up and down.
constexpr Shape kScales[] = {
    {30, 18, 20, 12},  {27, 21, 18, 14},   {18, 27, 12, 18},   {33, 21, 22, 14},   {50, 30, 20, 12},
    {75, 60, 10, 8},   {35, 35, 10, 10},   {300, 30, 200, 20}, {320, 40, 128, 16}, {480, 45, 64, 6},
    {248, 21, 72, 6},  {960, 15, 128, 2},  {1080, 45, 144, 6}, {51, 33, 34, 22},   {64, 48, 40, 30},
    {64, 48, 64, 48},  {100, 75, 64, 48},  {37, 29, 64, 50},   {33, 21, 10, 7},    {200, 20, 77, 9},
    {128, 96, 32, 24}, {96, 72, 32, 24},   {64, 64, 32, 32},   {50, 40, 49, 39},   {16, 16, 64, 64},
    {17, 3, 5, 2},     {30, 20, 20, 10},   {1, 1, 8, 8},       {2, 2, 1, 1},       {300, 8, 100, 4},
    {255, 9, 254, 8},  {640, 20, 257, 16}, {9, 300, 6, 199},   {180, 90, 96, 48},  {41, 13, 0, 5}};

/// a, b: width and height of the image; c, d: right and bottom margin.
constexpr Shape kPads[] = {
    {12, 6, 24, 12, 12, 6},   {12, 6, 24, 12, 3, 2},    {16, 9, 32, 16, 16, 4}, {37, 21, 64, 48, 27, 10},
    {48, 64, 64, 64, -16, 0}, {45, 60, 64, 64, -15, 0}, {13, 5, 40, 10, 13, 5}, {64, 36, 64, 64, 0, 28},
    {8, 8, 8, 8, 0, 0},       {20, 4, 20, 8, 0, 4},     {18, 7, 33, 9, 15, 2},  {7, 4, 15, 6, 7, 2},
    {1, 4, 8, 4, 0, 0},       {3, 3, 8, 8, 3, 3},       {24, 8, 24, 8, -9, 0},  {128, 74, 128, 128, 0, 54},
    {97, 18, 130, 20, 33, 2}, {66, 2, 66, 2, 0, 0},     {31, 6, 62, 6, 30, 0},  {9, 1, 64, 64, -55, 0}};

/// a: factor of the enlargement.
constexpr Shape kFactors[] = {{1, 1, 3},  {2, 3, 1}, {5, 3, 2},  {9, 4, 3},  {8, 2, 4}, {16, 3, 5},
                              {17, 2, 7}, {7, 5, 8}, {3, 2, 64}, {4, 3, 33}, {6, 2, 0}, {33, 5, 6}};

/// a, b: column and row of the region; c: its width, d: its height.
constexpr Shape kRegions[] = {{40, 20, 0, 0, 40, 20}, {40, 20, 3, 5, 9, 4},   {40, 20, 39, 19, 1, 1},
                              {33, 9, 16, 2, 17, 7},  {64, 12, 1, 1, 62, 10}, {20, 8, 4, 0, 0, 8}};

/// Every mode, the results behind each other.
template <void (*kTurn)(In, Out, int, int, int)>
void turns(In s, Out d, const Shape& z) {
  for (int mode = 0; mode < 4; ++mode) kTurn(s, d + 2 * z.w * z.h * mode, z.w, z.h, mode);
}

template <int (*kConvert)(In, Out, int, int, int, int, int, int)>
void padded(In s, Out d, const Shape& z) {
  kConvert(s, d, z.w, z.h, z.a, z.b, z.c, z.d);
}

template <auto kKernel>
void sized(In s, Out d, const Shape& z) {
  kKernel(s, d, z.w, z.h);
}

void to_planes(In s, Out d, const Shape& z) {
  const int plane = z.w * z.h + 8;
  Out const planes[3] = {d, d + plane, d + 2 * plane};
  NV21toBGR_planar(s, planes, z.w, z.h);
}

void to_hsv(In s, Out d, const Shape& z) {
  static Bytes pixels;
  static std::vector<float> hsv;
  pixels.assign(s, s + 3 * z.w * z.h);
  hsv.assign(pixels.size() + 3, -1.0f);
  BGR2HSV(pixels.data(), hsv.data(), z.w, z.h);
  std::memcpy(d, hsv.data(), hsv.size() * sizeof(float));
}

/// Every other cell is marked, by the bytes of the source.
template <auto kPass>
void blurred(In s, Out d, const Shape& z) {
  static Bytes grid(kBlurGridColumns * 20);
  for (size_t i = 0; i < grid.size(); ++i) grid[i] = s[i] & 1;
  uint16_t weights[41];
  constexpr struct {
    float sigma;
    int radius, bits;
  } kBlurs[] = {{0.8f, 1, 8}, {1.5f, 4, 8}, {2.5f, 5, 14}, {20.0f, 20, 14}, {0.0f, 2, 8}};
  for (const auto& blur : kBlurs) {
    GFilterCreation(blur.sigma, blur.radius, blur.bits, weights);
    kPass(s, d, grid.data(), z.w, z.h, weights, blur.radius, blur.bits);
    d += z.w * z.h;
  }
}

struct Kernel {
  const char* name;
  std::span<const Shape> shapes;
  void (*run)(In s, Out d, const Shape& z);
};

const Kernel kKernels[] = {
    {"NV21toRGB", kSizes, [](In s, Out d, const Shape& z) { NV21toRGB(s, s + z.w * z.h, d, z.w, z.h); }},
    {"NV21toBGR", kSizes, sized<NV21toBGR>},
    {"NV21toBGR_planar", kSizes, to_planes},
    {"NV21toRGB_pad", kPads, padded<NV21toRGB_pad>},
    {"NV21toBGR_pad", kPads, padded<NV21toBGR_pad>},
    {"NV12toRGB_pad", kPads, padded<NV12toRGB_pad>},
    {"NV21toBGR_pad_lsi", kPads, padded<NV21toBGR_pad_lsi>},
    {"RGBtoNV21", kSizes, [](In s, Out d, const Shape& z) { RGBtoNV21(s, d, d + z.w * z.h, z.w, z.h); }},
    {"BGRtoNV21", kSizes, sized<BGRtoNV21>},
    {"BGR2GRAY", kSizes, sized<BGR2GRAY>},
    {"BGR2HSV", kSizes, to_hsv},
    {"resize_NV21", kScales, [](In s, Out d, const Shape& z) { resize_NV21(s, d, z.w, z.h, z.a, z.b); }},
    {"resize_NV21_opt", kScales,
     [](In s, Out d, const Shape& z) { resize_NV21_opt(s + 9, s, d, z.w, z.h, z.a, z.b); }},
    {"resize_NV21_2x_up", kSizes, sized<resize_NV21_2x_up>},
    {"resize_NV21_2x_down", kSizes, sized<resize_NV21_2x_down>},
    {"resize_NV21_3x_down", kSizes, sized<resize_NV21_3x_down>},
    {"resize_Y_1", kScales, [](In s, Out d, const Shape& z) { resize_Y_1(s, d, z.w, z.h, z.a, z.b); }},
    {"resize_y", kFactors, [](In s, Out d, const Shape& z) { resize_y(s, d, z.w, z.h, z.a); }},
    {"resize_y_2x_up", kSizes, sized<resize_y_2x_up>},
    {"resize_y_4x_up", kSmallSizes, sized<resize_y_4x_up>},
    {"resize_y_6x_up", kSmallSizes, sized<resize_y_6x_up>},
    {"resize_y_8x_up_RR_hori", kRegions,
     [](In s, Out d, const Shape& z) { resize_y_8x_up_RR_hori(s, d, z.w, z.a, z.b, z.c, z.d, 8 * z.c + 3); }},
    {"resize_y_8x_up_RR_vert", kRegions,
     [](In s, Out d, const Shape& z) { resize_y_8x_up_RR_vert(s, d, z.w, z.a, z.b, z.c, z.d, z.c + 3); }},
    {"rotate_y", kSizes, turns<rotate_y>},
    {"rotate_y_opt", kSizes, turns<rotate_y_opt>},
    {"rotate_NV21", kSizes, turns<rotate_NV21>},
    {"rotate_NV21_opt", kSizes, turns<rotate_NV21_opt>},
    {"GaussianBlur_Grid_Hori", kSizes, blurred<GaussianBlur_Grid_Hori>},
    {"GaussianBlur_Grid_Vert", kSizes, blurred<GaussianBlur_Grid_Vert>},
};

/// What lies around the pictures is part of the input: kernels may read and write a little of it.
constexpr size_t kAround = 8192;
constexpr size_t kRoom = size_t{160} << 10;

uint64_t digest_of(const Kernel& kernel) {
  static const Bytes sources[] = {bytes_of(kKinds[0], 2 * kAround + kRoom, 1),
                                  bytes_of(kKinds[1], 2 * kAround + kRoom, 2),
                                  bytes_of(kKinds[2], 2 * kAround + kRoom, 3)};
  static Bytes target;
  case_under_way = kernel.name;
  Digest digest;
  for (const Shape& shape : kernel.shapes) {
    for (const Bytes& source : sources) {
      target = sources[0];
      kernel.run(source.data() + kAround, target.data() + kAround, shape);
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
  for (const Kernel& kernel : kKernels) figures.push_back({kernel.name, digest_of(kernel)});
  figures.push_back({"NV21toRGB of a large frame", digest_of_large()});
}

}  // namespace morvale::selfcheck
