/// One vector set. Compiled once per variant: MORVALE_VARIANT is its name and its namespace.
#include "kernels/kernel_set.h"

#define MORVALE_TEXT_(x) #x
#define MORVALE_TEXT(x) MORVALE_TEXT_(x)

namespace morvale::MORVALE_VARIANT {

extern const KernelSet kKernels;
constinit const KernelSet kKernels = {MORVALE_TEXT(MORVALE_VARIANT),
                                      kColorRows,
                                      kResampleRows,
                                      kPlaneRows,
                                      kRotateBlocks,
                                      kNetworkRows,
                                      kFaceRows};

}  // namespace morvale::MORVALE_VARIANT
