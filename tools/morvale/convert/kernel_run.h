#pragma once

#include "convert/kernel_flags.h"
#include "pictures/picture.h"

namespace tool {

/// Runs a kernel over a picture of the layout that it takes. Behind the picture the kernel finds its last row
/// again, over and over (some kernels read on where a weight is not 0). What it leaves unwritten of the
/// result is 128 in chroma and 0 elsewhere; what it writes behind the result is dropped. Throws UsageError
/// when it cannot run with these sizes and flags.
Picture run_kernel(const Kernel& kernel, const Picture& in, const KernelFlags& flags);

}  // namespace tool
