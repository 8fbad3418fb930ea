#include "analysis/region_labeller.h"

#include <algorithm>

#include "analysis/regions.h"

namespace morvale {

std::vector<info> RegionLabeller::by_area() const {
  std::vector<info> found;
  for (int32_t label = 1; label <= count_; ++label) {
    if ((*this)[label].valid) found.push_back({(*this)[label].area(), label});
  }
  std::sort(found.begin(), found.end(), cmp);
  return found;
}

}  // namespace morvale
