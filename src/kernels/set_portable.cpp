#include "kernels/kernel_set.h"

namespace morvale {

extern const KernelSet kPortableKernels;
constinit const KernelSet kPortableKernels = {
    "portable",           portable::kColorRows,    portable::kBilinearRows, portable::kHalfRatioRows,
    portable::kPlaneRows, portable::kRotateBlocks, portable::kNetworkRows,  portable::kFaceRows};

}  // namespace morvale
