#include "analysis/region_labeller.h"

#include <algorithm>

#include <morvale/analysis/regions.h>

namespace morvale {

RegionList RegionTable::by_area() const {
  RegionList found;
  for (int32_t label = 1; label <= count_; ++label) {
    if ((*this)[label].valid) found.add({(*this)[label].area(), label});
  }
  // Equal areas come by label. Left to the sort, their order would be another with every standard library.
  std::sort(found.begin(), found.end(),
            [](const info& a, const info& b) { return cmp(a, b) || (!cmp(b, a) && a.label < b.label); });
  return found;
}

}  // namespace morvale
