/// The image kernels of the library, one entry a kernel, for whatever runs them by their names.
#pragma once

#include <string_view>

#include "kernel_list/kernel_forms.h"
#include "kernel_list/layout.h"

namespace kernel_list {

/// What becomes of a size: multiplied, then divided.
struct Ratio {
  int wide = 1, high = 1, divisor = 1;
};

struct Kernel {
  std::string_view name;
  Layout takes, gives;
  Group group;
  Ratio ratio;  ///< from the source (a region of it, in kRegion) to the result, where that is fixed
  const char* summary;
  void (*run)(const uint8_t* source, uint8_t* target, const Arguments& arguments);
  Status (*checked)(Source source, Target target, const Arguments& arguments);
};

template <Group kGroup, auto kRaw, auto kChecked>
constexpr Kernel entry(std::string_view name, Layout takes, Layout gives, const char* summary,
                       Ratio ratio = {}) {
  return {name, takes, gives, kGroup, ratio, summary, call<kGroup, kRaw>, call<kGroup, kChecked>};
}

using enum Layout;
using enum Group;

/// One name for the entry, the kernel and its checked form, so that they cannot differ.
#define KERNEL(group, name, ...) entry<group, ::name, checked::name>(#name, __VA_ARGS__)

inline constexpr Kernel kKernels[] = {
    entry<kSized, SourceJoined<::NV21toRGB>{}, SourceJoined<checked::NV21toRGB>{}>(
        "NV21toRGB", kNv21, kRgb, "full-range colour, every pixel rounded"),
    KERNEL(kSized, NV21toBGR, kNv21, kBgr, "full-range colour, truncated"),
    entry<kSized, nv21_to_planes, checked_nv21_to_planes>("NV21toBGR_planar", kNv21, kPlanarBgr,
                                                          "NV21toBGR into three planes"),
    KERNEL(kPadded, NV21toRGB_pad, kNv21, kRgb, "colour with mirrored margins: the network's input"),
    KERNEL(kPadded, NV21toBGR_pad, kNv21, kBgr, "the same, blue first"),
    KERNEL(kPadded, NV12toRGB_pad, kNv12, kRgb, "NV21toRGB_pad from NV12"),
    KERNEL(kPadded, NV21toBGR_pad_lsi, kNv21, kPlanarBgr, "NV21toBGR_pad into three planes"),
    entry<kSized, TargetJoined<::RGBtoNV21>{}, TargetJoined<checked::RGBtoNV21>{}>(
        "RGBtoNV21", kRgb, kNv21, "full range; chroma of each block's top-left pixel"),
    KERNEL(kSized, BGRtoNV21, kBgr, kNv21, "the same, blue first"),
    KERNEL(kSized, BGR2GRAY, kBgr, kY, "BT.709 luma, truncated"),
    entry<kSized, bgr_to_hsv, checked_bgr_to_hsv>("BGR2HSV", kBgr, kHsv,
                                                  "hue 0..360, saturation and value 0..255"),

    KERNEL(kScaled, resize_NV21, kNv21, kNv21, "any size, bilinear or half-ratio averaging"),
    entry<kScaled, SourceJoined<::resize_NV21_opt>{}, SourceJoined<checked::resize_NV21_opt>{}>(
        "resize_NV21_opt", kNv21, kNv21, "the same with the planes apart"),
    KERNEL(kSized, resize_NV21_2x_up, kNv21, kNv21, "twice as wide and high", {2, 2}),
    KERNEL(kSized, resize_NV21_2x_down, kNv21, kNv21, "every second pixel of every second row", {1, 1, 2}),
    KERNEL(kSized, resize_NV21_3x_down, kNv21, kNv21, "the mean of each 3 x 3 block", {1, 1, 3}),
    KERNEL(kScaled, resize_Y_1, kY, kY, "any size, the luma rule of resize_NV21"),
    KERNEL(kByFactor, resize_y, kY, kY, "enlarged by a factor"),
    KERNEL(kSized, resize_y_2x_up, kY, kY, "twice as wide and high", {2, 2}),
    KERNEL(kSized, resize_y_4x_up, kY, kY, "four times as wide and high", {4, 4}),
    KERNEL(kSized, resize_y_6x_up, kY, kY, "six times as wide and high", {6, 6}),
    KERNEL(kRegion, resize_y_8x_up_RR_hori, kY, kY, "a region, eight times as wide", {8, 1}),
    KERNEL(kRegion, resize_y_8x_up_RR_vert, kY, kY, "a region, eight times as high", {1, 8}),

    KERNEL(kTurned, rotate_y, kY, kY, "mode 0 clockwise and mirrored, 2 counter-clockwise, else mirrored"),
    KERNEL(kTurned, rotate_y_opt, kY, kY, "the same, but a half turn for other modes"),
    KERNEL(kTurned, rotate_NV21, kNv21, kNv21, "mode 0 clockwise, 2 counter-clockwise, else a half turn"),
    KERNEL(kTurned, rotate_NV21_opt, kNv21, kNv21, "the same"),

    KERNEL(kBlurred, GaussianBlur_Grid_Hori, kY, kY, "blur along rows, weights of GFilterCreation"),
    KERNEL(kBlurred, GaussianBlur_Grid_Vert, kY, kY, "blur along columns, weights of GFilterCreation"),
};

#undef KERNEL

/// Null if there is none of that name.
constexpr const Kernel* find(std::string_view name) {
  for (const Kernel& kernel : kKernels)
    if (kernel.name == name) return &kernel;
  return nullptr;
}

/// A name that is not in the list stops the build.
consteval const Kernel& named(std::string_view name) { return *find(name); }

/// A kernel that lacks nothing but its source and its target.
inline auto bound(const Kernel& kernel, const Arguments& arguments) {
  return [=, run = kernel.run](const uint8_t* source, uint8_t* target) { run(source, target, arguments); };
}

}  // namespace kernel_list
