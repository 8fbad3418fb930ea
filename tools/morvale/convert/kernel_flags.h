/// The flags of `morvale convert` that a kernel may take, and what they come to.
#pragma once

#include <optional>
#include <span>
#include <string>

#include "kernel_list/kernel_list.h"
#include "pictures/picture_size.h"

namespace tool {

using kernel_list::Kernel;
using kernel_list::Region;

/// What the flags say; a kernel looks only at those that it takes.
struct KernelFlags {
  kernel_list::Arguments arguments;  ///< a size of 0, of the result or the region: as the picture has it
  float sigma = 0;
  std::optional<int> radius;
  std::string grid;  ///< a file; empty: all cells
};

/// A flag of the kernels of one group.
struct FlagInfo {
  kernel_list::Group group;
  bool required;
  const char* name;
  const char* value;
  const char* help;
};
std::span<const FlagInfo> kernel_flags();

/// A call's arguments but for a blur's weights and grid. Throws UsageError for flags that do not fit the
/// picture.
kernel_list::Arguments arguments_of(const Kernel& kernel, FrameSize in, const KernelFlags& flags);

}  // namespace tool
