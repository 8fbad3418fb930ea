/// Labels the regions of a picture in one pass. The analyses differ in the mask, and in the window through
/// which it grows (analysis/grow_rows.h), alone.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include <morvale/core/records.h>

namespace morvale {

/// A region's inclusive bounding box.
struct Region {
  int32_t min_x, max_x, min_y, max_y;
  bool valid;  ///< false once it was merged into another

  /// Without +1 on either side: a region one pixel wide or high has area 0.
  int32_t area() const { return (max_x - min_x) * (max_y - min_y); }
};

/// Labels run 1 .. 255, 256, 255, 256, ...: 256 is stored in the image as 0, so its pixels grow no further,
/// but it has a table entry of its own.
constexpr int32_t kLastLabel = 256;

/// Regions and their labels, in order.
class RegionList {
 public:
  void add(info region) { regions_[size_++] = region; }
  info* begin() { return regions_.data(); }
  info* end() { return regions_.data() + size_; }
  bool empty() const { return size_ == 0; }
  size_t size() const { return size_; }
  const info& operator[](size_t i) const { return regions_[i]; }

 private:
  std::array<info, kLastLabel> regions_;
  size_t size_ = 0;
};

/// The regions found so far, and what labelling does to them.
class RegionTable {
 public:
  /// A new region's label, for its first pixel.
  int32_t start(int x, int y) {
    count_ = count_ >= kLastLabel ? kLastLabel - 1 : count_ + 1;
    regions_[static_cast<size_t>(count_)] = {x, x, y, y, true};
    return count_;
  }

  /// A pixel without a left neighbour continues the region above it.
  void reach_down(int32_t label, int y) { at(label).max_y = y; }

  /// A pixel with a left neighbour takes its label and never moves max_y.
  void reach_right(int32_t label, int x) {
    if (x > at(label).max_x) at(label).max_x = x;
  }

  /// A live region above such a pixel is merged into the one on the left. Nobody asks whether that one is
  /// alive.
  void merge(int32_t upper, int32_t left) {
    Region &from = at(upper), &to = at(left);
    if (upper == left || !from.valid) return;
    from.valid = false;
    if (from.min_x < to.min_x) to.min_x = from.min_x;
    if (from.min_y < to.min_y) to.min_y = from.min_y;
    // Compared with the merged left edge, not with the right one: the box may so lose columns that the left
    // region reached. max_y is not merged either. Kept on purpose.
    if (from.max_x > to.min_x) to.max_x = from.max_x;
  }

  void clear() { count_ = 0; }
  int32_t count() const { return count_; }
  const Region& operator[](int32_t label) const { return regions_[static_cast<size_t>(label)]; }

  /// The live regions, largest area first, equal ones by label.
  RegionList by_area() const;

 private:
  Region& at(int32_t label) { return regions_[static_cast<size_t>(label)]; }

  int32_t count_ = 0;
  std::array<Region, kLastLabel + 1> regions_;  // only labels 1 .. count_ were ever written
};

/// Labels pixels with one pass and no table of equivalences, so it is inexact by design: pixels of a
/// merged-away region keep their dead label, and what later grows from them is lost. The records depend on
/// exactly that. This is the rule; label_regions (analysis/run_labeller.h) follows it in larger steps.
class RegionLabeller {
 public:
  /// labels: the image to write, row stride `width`; 0 means no region. regions: the table to fill, empty.
  RegionLabeller(uint8_t* labels, int width, RegionTable& regions)
      : labels_(labels), width_(width), regions_(regions) {}

  /// Labels pixel (x, y), row by row; `grows` says whether it belongs to any region.
  void visit(int x, int y, bool grows) {
    uint8_t* pixel = labels_ + static_cast<ptrdiff_t>(y) * width_ + x;
    if (!grows) {
      *pixel = 0;
      return;
    }
    const uint8_t up = y > 0 ? pixel[-width_] : uint8_t{0};
    const uint8_t left = x > 0 ? pixel[-1] : uint8_t{0};
    if (left != 0) {
      regions_.reach_right(left, x);
      if (up != 0) regions_.merge(up, left);
      *pixel = left;
    } else if (up != 0) {
      regions_.reach_down(up, y);
      *pixel = up;
    } else {
      *pixel = static_cast<uint8_t>(regions_.start(x, y));
    }
  }

 private:
  uint8_t* labels_;
  ptrdiff_t width_;
  RegionTable& regions_;
};

}  // namespace morvale
