/// Six label planes out of a map of five-byte cells. Exported for callers; no frame passes here.
#include <morvale/core/globals.h>
#include <morvale/core/morvale_core.h>
#include "kernels/kernel_set.h"

using namespace morvale;

void MorvaleCore::argMax_6label(uint8_t* plane0, uint8_t* plane1, uint8_t* plane2, uint8_t* plane3,
                                uint8_t* plane4, uint8_t* plane5, uint8_t* segMap) {
  if (NETSIZE < 1 || segFactor < 1) return;
  const ptrdiff_t cells = static_cast<ptrdiff_t>(NETSIZE) * segFactor;
  uint8_t* const planes[] = {plane0, plane1, plane2, plane3, plane4};
  kernels().network.split(segMap, planes, cells);
  // A cell has five bytes: the sixth plane receives the first byte of the following one.
  for (ptrdiff_t p = 0; p < cells; ++p) plane5[p] = segMap[kLabels * (p + 1)];
}
