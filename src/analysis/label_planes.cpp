#include "analysis/label_planes.h"

#include <morvale/core/morvale_core.h>

void MorvaleCore::argMax_6label(uint8_t* plane0, uint8_t* plane1, uint8_t* plane2, uint8_t* plane3,
                                uint8_t* plane4, uint8_t* plane5, uint8_t* segMap) {
  if (NETSIZE < 1 || segFactor < 1) return;
  uint8_t* const planes[] = {plane0, plane1, plane2, plane3, plane4, plane5};
  morvale::split_labels(segMap, static_cast<ptrdiff_t>(NETSIZE) * segFactor, planes);
}
