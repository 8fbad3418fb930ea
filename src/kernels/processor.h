/// What this processor can run, and which set of kernels is to be used. Apart from the sets themselves, so
/// that a program can tell what the library beside it chose.
#pragma once

#include <span>
#include <string_view>

namespace morvale {

/// The names of the sets that this processor can run, slowest first; "portable" is always there.
std::span<const std::string_view> runnable_kernel_names();

struct KernelChoice {
  std::string_view name;
  std::string_view refused;  ///< what MORVALE_KERNELS asked for in vain, or empty
};

/// The best set, or the one that the environment variable MORVALE_KERNELS names.
KernelChoice choose_kernels();

}  // namespace morvale
