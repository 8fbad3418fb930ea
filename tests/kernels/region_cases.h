/// Masks, and the regions in them found twice: pixel by pixel as the rule reads, and word by word and run by
/// run.
#pragma once

#include <random>
#include <string>
#include <vector>

#include "analysis/grow_rows.h"
#include "analysis/run_labeller.h"
#include "kernels/windows.h"

namespace region_cases {

using namespace morvale;

/// A mask of pixels, one byte each.
struct Mask {
  int width, height;
  std::vector<uint8_t> pixels =
      std::vector<uint8_t>(static_cast<size_t>(width) * static_cast<size_t>(height));

  uint8_t& at(int x, int y) { return pixels[static_cast<size_t>(y * width + x)]; }
  void paint(int x0, int y0, int w, int h) {
    for (int y = std::max(y0, 0); y < std::min(y0 + h, height); ++y) {
      for (int x = std::max(x0, 0); x < std::min(x0 + w, width); ++x) at(x, y) = 1;
    }
  }
};

struct Found {
  std::vector<uint8_t> grown, labels;
  std::vector<std::vector<int32_t>> regions;
  bool stray_bits = false;  ///< behind the width
  bool operator==(const Found&) const = default;
};

inline std::vector<std::vector<int32_t>> rows_of(const RegionTable& regions) {
  std::vector<std::vector<int32_t>> rows;
  for (int32_t label = 1; label <= regions.count(); ++label) {
    const Region& r = regions[label];
    rows.push_back({r.min_x, r.max_x, r.min_y, r.max_y, r.valid});
  }
  return rows;
}

enum class Window { kNone, kNear, kTrailing };

inline Found by_pixels(Mask mask, Window window) {
  std::vector<int32_t> table(mask.pixels.size());
  SummedArea sums(table.data(), mask.width);
  for (int y = 0; y < mask.height; ++y) {
    for (int x = 0; x < mask.width; ++x) sums.add(x, y, mask.at(x, y) != 0);
  }
  Found found;
  found.labels.assign(mask.pixels.size(), 99);
  RegionTable regions;
  RegionLabeller labeller(found.labels.data(), mask.width, regions);
  for (int y = 0; y < mask.height; ++y) {
    for (int x = 0; x < mask.width; ++x) {
      const bool grows = window == Window::kNear       ? near_window(sums, x, y, mask.width, mask.height) >= 1
                         : window == Window::kTrailing ? trailing_window(sums, x, y) >= 1
                                                       : mask.at(x, y) != 0;
      found.grown.push_back(grows);
      labeller.visit(x, y, grows);
    }
  }
  found.regions = rows_of(regions);
  return found;
}

inline Found by_runs(Mask mask, Window window, bool with_image) {
  std::vector<uint64_t> words(BitRows::size(mask.width, mask.height));
  std::vector<uint64_t> room(grow_near_room(mask.width, mask.height), 0x5555555555555555);
  const BitRows rows{words.data(), mask.width, mask.height};
  for (int y = 0; y < mask.height; ++y) {
    for (int x = 0; x < mask.width; ++x) {
      if (mask.at(x, y) != 0) rows.column(x / 64)[y] |= uint64_t{1} << (x % 64);
    }
  }
  if (window == Window::kNear) grow_near(rows, room.data());
  if (window == Window::kTrailing) grow_trailing(rows);
  Found found;
  for (int y = 0; y < mask.height; ++y) {
    for (int x = 0; x < rows.columns() * 64; ++x) {
      if (x < mask.width) found.grown.push_back(rows.at(x, y));
      if (x >= mask.width) found.stray_bits |= rows.at(x, y);
    }
  }
  found.labels.assign(with_image ? mask.pixels.size() : 0, 99);
  RegionTable regions;
  label_regions(rows, regions, with_image ? found.labels.data() : nullptr);
  found.regions = rows_of(regions);
  return found;
}

}  // namespace region_cases
