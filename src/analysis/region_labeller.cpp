#include "analysis/region_labeller.h"

#include <algorithm>

#include <morvale/analysis/regions.h>

namespace morvale {

RegionList RegionTable::by_area() const {
  RegionList found;
  for (int32_t label = 1; label <= count_; ++label) {
    if ((*this)[label].valid) found.add({(*this)[label].area(), label});
  }
  std::sort(found.begin(), found.end(), cmp);
  return found;
}

}  // namespace morvale
