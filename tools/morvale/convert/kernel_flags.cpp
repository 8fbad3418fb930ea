#include "convert/kernel_flags.h"

#include <algorithm>

#include "common/command.h"
#include "kernel_list/on_pictures.h"

namespace tool {
namespace {

using kernel_list::Arguments;
using enum kernel_list::Group;

constexpr FlagInfo kFlags[] = {
    {kTurned, true, "--mode", "N", "Turning: 0, 2 or another number; each kernel's own mapping, no angle"},
    {kByFactor, true, "--factor", "N", "How many times larger, 1 to 64"},
    {kScaled, true, "--to", "WxH", "The result's size"},
    {kPadded, false, "--right-margin", "N", "Columns mirrored on the right; may be negative (default: 0)"},
    {kPadded, false, "--bottom-margin", "N", "Rows mirrored below (default: 0)"},
    {kPadded, false, "--out-width", "N",
     "Pixels in a row of the result (default: the picture and its margin)"},
    {kPadded, false, "--out-height", "N", "Rows of the result (default: the picture and its margin)"},
    {kRegion, false, "--region", "X,Y,W,H", "The part to enlarge (default: all)"},
    {kBlurred, true, "--sigma", "S", "Standard deviation of the blur in pixels"},
    {kBlurred, false, "--radius", "N",
     "Neighbours on each side, 0 to 127 (default: three times sigma, rounded up)"},
    {kBlurred, false, "--bits", "8|14", "Fractional bits of the weights (default: 8)"},
    {kBlurred, false, "--grid", "FILE", "Cells of 8 x 8 pixels to blur (default: all)"},
};

/// The output must hold the picture with its margins: a kernel writes them whatever the output's size.
int side_with_margin(const char* flag, int asked, int side, int margin) {
  const int needed = side + std::max(margin, 0);
  if (asked != 0 && asked < needed)
    throw UsageError(std::string(flag) + ": " + std::to_string(asked) +
                     " does not hold the picture with its margin; give at least " + std::to_string(needed) +
                     ".");
  return std::max(asked, needed);
}

}  // namespace

std::span<const FlagInfo> kernel_flags() { return kFlags; }

Arguments arguments_of(const Kernel& kernel, FrameSize in, const KernelFlags& flags) {
  Arguments a = flags.arguments;
  a.width = in.width;
  a.height = in.height;
  if (kernel.group == kPadded) {
    a.out_width = side_with_margin("--out-width", a.out_width, a.width, a.right_margin);
    a.out_height = side_with_margin("--out-height", a.out_height, a.height, a.bottom_margin);
  } else if (kernel.group == kRegion) {
    if (a.region.width == 0) a.region = {0, 0, in.width, in.height};
    if (int64_t{a.region.x} + a.region.width > in.width || int64_t{a.region.y} + a.region.height > in.height)
      throw UsageError("--region: leaves the picture of " + text_of(in) + "; give one inside it.");
    a.out_width = kernel_list::result_size(kernel, a).width;
  }
  return a;
}

}  // namespace tool
