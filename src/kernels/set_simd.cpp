/// One vector set. Compiled once per variant: MORVALE_VARIANT is its name and its namespace.
#include "kernels/kernel_set.h"

namespace morvale::MORVALE_VARIANT {

extern const KernelSet kKernels;

#if defined(__AVX512VBMI__)
// What AVX-512 does not make faster is the AVX2 set's: the enlargers were slower by a quarter.
constinit const KernelSet kKernels = {
    "avx512",         kColorRows,          avx2::kBilinearRows, avx2::kHalfRatioRows,
    avx2::kPlaneRows, avx2::kRotateBlocks, kNetworkRows,        kFaceRows};
#else
#define MORVALE_TEXT_(x) #x
#define MORVALE_TEXT(x) MORVALE_TEXT_(x)
constinit const KernelSet kKernels = {MORVALE_TEXT(MORVALE_VARIANT),
                                      kColorRows,
                                      kBilinearRows,
                                      kHalfRatioRows,
                                      kPlaneRows,
                                      kRotateBlocks,
                                      kNetworkRows,
                                      kFaceRows};
#endif

}  // namespace morvale::MORVALE_VARIANT
