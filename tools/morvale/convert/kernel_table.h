/// The image kernels as `morvale convert` knows them: one table, one entry a kernel.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include <morvale/checked.h>
#include "pictures/picture.h"

namespace tool {

struct Region {
  int x = 0, y = 0, width = 0, height = 0;
};

/// What the flags say; a kernel looks only at those that its entry names.
struct KernelFlags {
  int mode = 0, factor = 1;
  FrameSize to;
  int right_margin = 0, bottom_margin = 0;
  std::optional<int> out_width, out_height;
  std::optional<Region> region;
  float sigma = 0;
  std::optional<int> radius;
  int bits = 8;
  std::string grid;  ///< a file; empty: all cells
};

/// Bits that say which flags a kernel takes.
enum FlagBit : unsigned {
  kMode = 1u << 0,
  kFactor = 1u << 1,
  kTo = 1u << 2,
  kRightMargin = 1u << 3,
  kBottomMargin = 1u << 4,
  kOutWidth = 1u << 5,
  kOutHeight = 1u << 6,
  kRegion = 1u << 7,
  kSigma = 1u << 8,
  kRadius = 1u << 9,
  kBits = 1u << 10,
  kGrid = 1u << 11,
};

struct FlagInfo {
  FlagBit bit;
  const char* name;
  const char* value;
  const char* help;
};
std::span<const FlagInfo> kernel_flags();

/// One call: the buffers begin with the pictures and go on with the room that kernels may reach into.
struct KernelCall {
  FrameSize in, out;
  std::span<const uint8_t> source;
  std::span<uint8_t> target;
  const KernelFlags& flags;
};

struct Kernel {
  std::string_view name;
  Layout takes, gives;
  unsigned required, optional;  ///< FlagBits
  const char* summary;
  /// The result's size; throws UsageError for flags that do not fit the picture.
  FrameSize (*result_size)(FrameSize in, const KernelFlags& flags);
  morvale::checked::Status (*run)(const KernelCall& call);
};
std::span<const Kernel> kernels();

/// Null when there is none of this name.
const Kernel* find_kernel(std::string_view name);

}  // namespace tool
