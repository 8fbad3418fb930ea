#include "convert/kernel_table.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <vector>

#include "common/command.h"
#include "pictures/opencv_module.h"

namespace tool {
namespace {

namespace checked = morvale::checked;
using checked::Status;

// ---- How large the result is ----

FrameSize same(FrameSize in, const KernelFlags&) { return in; }
FrameSize given(FrameSize, const KernelFlags& flags) { return flags.to; }

template <int kFactor>
FrameSize enlarged(FrameSize in, const KernelFlags&) {
  return {kFactor * in.width, kFactor * in.height};
}
template <int kDivisor>
FrameSize shrunk(FrameSize in, const KernelFlags&) {
  return {in.width / kDivisor, in.height / kDivisor};
}
FrameSize by_factor(FrameSize in, const KernelFlags& flags) {
  return {flags.factor * in.width, flags.factor * in.height};
}
FrameSize turned(FrameSize in, const KernelFlags& flags) {
  const bool quarter = flags.mode == 0 || flags.mode == 2;
  return quarter ? FrameSize{in.height, in.width} : in;
}

/// The output must hold the picture with its margins: a kernel writes them whatever the output's size.
int side_with_margin(const char* flag, std::optional<int> asked, int side, int margin) {
  const int needed = side + std::max(margin, 0);
  if (asked && *asked < needed)
    throw UsageError(std::string(flag) + ": " + std::to_string(*asked) +
                     " does not hold the picture with its margin; give at least " + std::to_string(needed) +
                     ".");
  return asked.value_or(needed);
}
FrameSize with_margins(FrameSize in, const KernelFlags& flags) {
  return {side_with_margin("--out-width", flags.out_width, in.width, flags.right_margin),
          side_with_margin("--out-height", flags.out_height, in.height, flags.bottom_margin)};
}

Region region_of(FrameSize in, const KernelFlags& flags) {
  const Region region = flags.region.value_or(Region{0, 0, in.width, in.height});
  if (int64_t{region.x} + region.width > in.width || int64_t{region.y} + region.height > in.height)
    throw UsageError("--region: leaves the picture of " + text_of(in) + "; give one inside it.");
  return region;
}
FrameSize region_widened(FrameSize in, const KernelFlags& flags) {
  const Region region = region_of(in, flags);
  return {8 * region.width, region.height};
}
FrameSize region_heightened(FrameSize in, const KernelFlags& flags) {
  const Region region = region_of(in, flags);
  return {region.width, 8 * region.height};
}

// ---- How a kernel is called ----

template <auto kKernel>
Status sized(const KernelCall& c) {
  return kKernel(c.source, c.target, c.in.width, c.in.height);
}
template <auto kKernel>
Status rescaled(const KernelCall& c) {
  return kKernel(c.source, c.target, c.in.width, c.in.height, c.out.width, c.out.height);
}
template <auto kKernel>
Status rotated(const KernelCall& c) {
  return kKernel(c.source, c.target, c.in.width, c.in.height, c.flags.mode);
}
template <auto kKernel>
Status padded(const KernelCall& c) {
  return kKernel(c.source, c.target, c.in.width, c.in.height, c.out.width, c.out.height, c.flags.right_margin,
                 c.flags.bottom_margin);
}
template <auto kKernel>
Status region_enlarged(const KernelCall& c) {
  const Region region = region_of(c.in, c.flags);
  return kKernel(c.source, c.target, c.in.width, region.x, region.y, region.width, region.height,
                 c.out.width);
}

size_t luma_bytes(FrameSize size) { return static_cast<size_t>(size.pixels()); }

Status apart_to_rgb(const KernelCall& c) {
  return checked::NV21toRGB(c.source, c.source.subspan(luma_bytes(c.in)), c.target, c.in.width, c.in.height);
}
Status rgb_to_apart(const KernelCall& c) {
  return checked::RGBtoNV21(c.source, c.target, c.target.subspan(luma_bytes(c.in)), c.in.width, c.in.height);
}
Status apart_rescaled(const KernelCall& c) {
  return checked::resize_NV21_opt(c.source, c.source.subspan(luma_bytes(c.in)), c.target, c.in.width,
                                  c.in.height, c.out.width, c.out.height);
}
Status factor_enlarged(const KernelCall& c) {
  return checked::resize_y(c.source, c.target, c.in.width, c.in.height, c.flags.factor);
}

/// The kernel runs past the end of each plane, so each has a buffer of its own with room behind it.
Status to_planes(const KernelCall& c) {
  const size_t pixels = luma_bytes(c.in);
  constexpr size_t kRoom = 7;
  std::array<std::vector<uint8_t>, 3> planes;
  for (auto& plane : planes) plane.resize(pixels + kRoom);
  const Status status =
      checked::NV21toBGR_planar(c.source, {planes[0], planes[1], planes[2]}, c.in.width, c.in.height);
  for (size_t k = 0; k < planes.size(); ++k) std::copy_n(planes[k].begin(), pixels, &c.target[k * pixels]);
  return status;
}

Status to_hsv(const KernelCall& c) {
  std::vector<float> hsv(3 * luma_bytes(c.in));
  const Status status = checked::BGR2HSV(c.source, hsv, c.in.width, c.in.height);
  std::memcpy(c.target.data(), hsv.data(), hsv.size() * sizeof(float));
  return status;
}

/// Three standard deviations hold all but a four-hundredth of the weight.
int blur_radius(const KernelFlags& flags) {
  constexpr float kMostRadius = 127;
  return flags.radius.value_or(static_cast<int>(std::min(std::ceil(3 * flags.sigma), kMostRadius)));
}

template <auto kKernel>
Status blurred(const KernelCall& c) {
  const int radius = blur_radius(c.flags);
  std::vector<uint16_t> weights(2 * static_cast<size_t>(radius) + 1);
  const Status status = checked::GFilterCreation(c.flags.sigma, radius, c.flags.bits, weights);
  if (status != Status::kOk) return status;
  const std::vector<uint8_t> grid = opencv().blur_grid(c.flags.grid, c.in);
  return kKernel(c.source, c.target, grid, c.in.width, c.in.height, weights, radius, c.flags.bits);
}

// ---- The tables ----

constexpr FlagInfo kFlags[] = {
    {kMode, "--mode", "N", "Turning: 0, 2 or another number; each kernel's own mapping, no angle"},
    {kFactor, "--factor", "N", "How many times larger, 1 to 64"},
    {kTo, "--to", "WxH", "The result's size"},
    {kRightMargin, "--right-margin", "N", "Columns mirrored on the right; may be negative (default: 0)"},
    {kBottomMargin, "--bottom-margin", "N", "Rows mirrored below (default: 0)"},
    {kOutWidth, "--out-width", "N", "Pixels in a row of the result (default: the picture and its margin)"},
    {kOutHeight, "--out-height", "N", "Rows of the result (default: the picture and its margin)"},
    {kRegion, "--region", "X,Y,W,H", "The part to enlarge (default: all)"},
    {kSigma, "--sigma", "S", "Standard deviation of the blur in pixels"},
    {kRadius, "--radius", "N", "Neighbours on each side, 0 to 127 (default: three times sigma, rounded up)"},
    {kBits, "--bits", "8|14", "Fractional bits of the weights (default: 8)"},
    {kGrid, "--grid", "FILE", "Cells of 8 x 8 pixels to blur (default: all)"},
};

constexpr unsigned kMargins = kRightMargin | kBottomMargin | kOutWidth | kOutHeight;
constexpr unsigned kBlurShape = kRadius | kBits | kGrid;
constexpr Layout kNv21 = Layout::kNv21, kBgr = Layout::kBgr, kRgb = Layout::kRgb, kY = Layout::kY;

constexpr Kernel kKernels[] = {
    {"NV21toRGB", kNv21, kRgb, 0, 0, "full-range colour, every pixel rounded", same, apart_to_rgb},
    {"NV21toBGR", kNv21, kBgr, 0, 0, "full-range colour, truncated", same, sized<checked::NV21toBGR>},
    {"NV21toBGR_planar", kNv21, Layout::kPlanarBgr, 0, 0, "NV21toBGR into three planes", same, to_planes},
    {"NV21toRGB_pad", kNv21, kRgb, 0, kMargins, "colour with mirrored margins: the network's input",
     with_margins, padded<checked::NV21toRGB_pad>},
    {"NV21toBGR_pad", kNv21, kBgr, 0, kMargins, "the same, blue first", with_margins,
     padded<checked::NV21toBGR_pad>},
    {"NV21toBGR_pad_lsi", kNv21, Layout::kPlanarBgr, 0, kMargins, "the same into three planes", with_margins,
     padded<checked::NV21toBGR_pad_lsi>},
    {"NV12toRGB_pad", Layout::kNv12, kRgb, 0, kMargins, "NV21toRGB_pad from NV12", with_margins,
     padded<checked::NV12toRGB_pad>},
    {"RGBtoNV21", kRgb, kNv21, 0, 0, "full range; chroma of each block's top-left pixel", same, rgb_to_apart},
    {"BGRtoNV21", kBgr, kNv21, 0, 0, "the same, blue first", same, sized<checked::BGRtoNV21>},
    {"BGR2GRAY", kBgr, kY, 0, 0, "BT.709 luma, truncated", same, sized<checked::BGR2GRAY>},
    {"BGR2HSV", kBgr, Layout::kHsv, 0, 0, "hue 0..360, saturation and value 0..255", same, to_hsv},

    {"resize_NV21", kNv21, kNv21, kTo, 0, "any size, bilinear or half-ratio averaging", given,
     rescaled<checked::resize_NV21>},
    {"resize_NV21_opt", kNv21, kNv21, kTo, 0, "the same with the planes apart", given, apart_rescaled},
    {"resize_NV21_2x_up", kNv21, kNv21, 0, 0, "twice as wide and high", enlarged<2>,
     sized<checked::resize_NV21_2x_up>},
    {"resize_NV21_2x_down", kNv21, kNv21, 0, 0, "every second pixel of every second row", shrunk<2>,
     sized<checked::resize_NV21_2x_down>},
    {"resize_NV21_3x_down", kNv21, kNv21, 0, 0, "the mean of each 3 x 3 block", shrunk<3>,
     sized<checked::resize_NV21_3x_down>},
    {"resize_Y_1", kY, kY, kTo, 0, "any size, the luma rule of resize_NV21", given,
     rescaled<checked::resize_Y_1>},
    {"resize_y", kY, kY, kFactor, 0, "enlarged by a factor", by_factor, factor_enlarged},
    {"resize_y_2x_up", kY, kY, 0, 0, "twice as wide and high", enlarged<2>, sized<checked::resize_y_2x_up>},
    {"resize_y_4x_up", kY, kY, 0, 0, "four times as wide and high", enlarged<4>,
     sized<checked::resize_y_4x_up>},
    {"resize_y_6x_up", kY, kY, 0, 0, "six times as wide and high", enlarged<6>,
     sized<checked::resize_y_6x_up>},
    {"resize_y_8x_up_RR_hori", kY, kY, 0, kRegion, "a region, eight times as wide", region_widened,
     region_enlarged<checked::resize_y_8x_up_RR_hori>},
    {"resize_y_8x_up_RR_vert", kY, kY, 0, kRegion, "a region, eight times as high", region_heightened,
     region_enlarged<checked::resize_y_8x_up_RR_vert>},

    {"rotate_y", kY, kY, kMode, 0, "mode 0 clockwise and mirrored, 2 counter-clockwise, else mirrored",
     turned, rotated<checked::rotate_y>},
    {"rotate_y_opt", kY, kY, kMode, 0, "the same, but a half turn for other modes", turned,
     rotated<checked::rotate_y_opt>},
    {"rotate_NV21", kNv21, kNv21, kMode, 0, "mode 0 clockwise, 2 counter-clockwise, else a half turn", turned,
     rotated<checked::rotate_NV21>},
    {"rotate_NV21_opt", kNv21, kNv21, kMode, 0, "the same", turned, rotated<checked::rotate_NV21_opt>},

    {"GaussianBlur_Grid_Hori", kY, kY, kSigma, kBlurShape, "along rows, weights of GFilterCreation", same,
     blurred<checked::GaussianBlur_Grid_Hori>},
    {"GaussianBlur_Grid_Vert", kY, kY, kSigma, kBlurShape, "along columns, weights of GFilterCreation", same,
     blurred<checked::GaussianBlur_Grid_Vert>},
};

}  // namespace

std::span<const FlagInfo> kernel_flags() { return kFlags; }
std::span<const Kernel> kernels() { return kKernels; }

const Kernel* find_kernel(std::string_view name) {
  const auto found =
      std::find_if(std::begin(kKernels), std::end(kKernels), [&](const Kernel& k) { return k.name == name; });
  return found == std::end(kKernels) ? nullptr : found;
}

}  // namespace tool
