#pragma once

#include <optional>
#include <string>

#include "convert/kernel_flags.h"

namespace tool {

struct ConvertOptions {
  bool list = false, json = false;  ///< with list, nothing else is set
  const Kernel* kernel = nullptr;
  KernelFlags flags;
  std::optional<FrameSize> size;
  std::string in, out;
};

/// Reads the command line of `morvale convert`. Prints the help and returns nothing when asked for it; throws
/// UsageError.
std::optional<ConvertOptions> parse_convert_options(int argc, char** argv);

}  // namespace tool
