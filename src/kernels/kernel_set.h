/// The row loops that the library's time goes into, in every form that this build has: portable, which is the
/// reference, and vector forms that give the same bytes. One place chooses, once, when the library is loaded.
///
/// The environment variable MORVALE_KERNELS, where the build listens to it, names another set ("portable",
/// "avx2", "neon", ...); a name that this processor cannot run is ignored, and the capture library reports it
/// in the log (core/refused_kernels.cpp).
#pragma once

#include <span>
#include <string_view>

#include "kernels/bilinear_rows.h"
#include "kernels/color_rows.h"
#include "kernels/face_rows.h"
#include "kernels/half_ratio_rows.h"
#include "kernels/network_rows.h"
#include "kernels/plane_rows.h"
#include "kernels/rotate_blocks.h"

namespace morvale {

struct KernelSet {
  std::string_view name;
  const ColorRows& color;
  const BilinearRows& bilinear;
  const HalfRatioRows& half_ratio;
  const PlaneRows& plane;
  const RotateBlocks& rotate;
  const NetworkRows& network;
  const FaceRows& face;
};

/// The sets that this processor can run, slowest first; the portable one is always there.
std::span<const KernelSet* const> runnable_kernels();

/// The set in use.
const KernelSet& kernels();

/// Uses another set from now on, for tests and benchmarks; not while a kernel runs. False when it is not
/// runnable.
bool use_kernels(std::string_view name);

}  // namespace morvale
