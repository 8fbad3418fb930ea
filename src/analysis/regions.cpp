#include <morvale/analysis/regions.h>

bool cmp(info a, info b) { return a.area > b.area; }

bool cmp_m(PersonMeta a, PersonMeta b) {
  return static_cast<uint32_t>(a.skinRatio) > static_cast<uint32_t>(b.skinRatio);
}
