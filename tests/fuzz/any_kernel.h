/// Any arguments of an image kernel, for pictures up to 99 x 39.
#pragma once

#include "fuzz/draws.h"
#include "kernel_list/kernel_list.h"

namespace any_kernel {

using namespace kernel_list;
using Bytes = std::vector<uint8_t>;

/// `weights` holds the table of the blurs, `grid` their marks.
inline Arguments draw_arguments(Draws& draws, const Kernel& kernel, const Bytes& grid, Bytes& weights) {
  Arguments a{.width = draws.below(100), .height = draws.below(40)};
  a.out_width = kernel.group == kPadded ? a.width + draws.below(100) : draws.below(200);
  a.out_height = draws.below(80);
  a.right_margin = draws.one_of({0, a.out_width - a.width, draws.below(100), -draws.below(50)});
  a.bottom_margin = draws.below(44) - 2;
  a.mode = draws.below(4);
  a.factor = draws.below(9);
  a.region = {draws.below(50), draws.below(20), draws.below(50), draws.below(20)};
  if (kernel.group == kRegion) a.out_width *= kernel.ratio.wide;
  auto* table = reinterpret_cast<uint16_t*>(weights.data());
  a.blur = {grid, {table, weights.size() / 2}, draws.below(21), draws.one_of({8, 14})};
  GFilterCreation(static_cast<float>(draws.below(200)) / 10, a.blur.radius, a.blur.bits, table);
  return a;
}

}  // namespace any_kernel
