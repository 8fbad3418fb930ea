/// Labels the growing pixels of a picture run by run.
#pragma once

#include <cstdint>

#include "analysis/bit_rows.h"
#include "analysis/region_labeller.h"

namespace morvale {

/// Finds the regions of `grows`, which begins as an empty table, with exactly the merges of RegionLabeller:
/// all pixels of a run bear one label, so a row's runs against the runs above it tell all. labels: the label
/// image to write, or null when nobody wants it. A picture of more than 255 regions, where labels leave a
/// byte, is left to RegionLabeller.
void label_regions(const BitRows& grows, RegionTable& regions, uint8_t* labels);

}  // namespace morvale
