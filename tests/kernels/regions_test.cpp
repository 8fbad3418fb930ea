/// Regions found word by word and run by run, against the pixel-by-pixel rule.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "analysis/grow_rows.h"
#include "analysis/run_labeller.h"
#include "kernels/kernel_set.h"
#include "kernels/windows.h"

namespace {

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

/// Boxes of any size and shape, a comb, and single pixels; some scenes dense, some nearly empty.
Mask random_scene(std::mt19937& random, int largest) {
  const auto below = [&](int n) { return static_cast<int>(random() % static_cast<uint32_t>(n)); };
  Mask mask{1 + below(largest), 1 + below(largest)};
  const int reach = 1 + below(40);
  for (int boxes = below(2) ? below(6) : below(80); boxes > 0; --boxes) {
    mask.paint(below(mask.width), below(mask.height), 1 + below(reach), 1 + below(reach));
  }
  const int teeth = below(3) ? 0 : 2 + below(60);
  for (int x = 0; teeth > 0 && x < mask.width; x += teeth)
    mask.paint(x, below(mask.height), 1, below(mask.height));
  for (int dots = below(4) ? 0 : below(400); dots > 0; --dots)
    mask.at(below(mask.width), below(mask.height)) = 1;
  return mask;
}

struct Found {
  std::vector<uint8_t> grown, labels;
  std::vector<std::vector<int32_t>> regions;
  bool operator==(const Found&) const = default;
};

std::vector<std::vector<int32_t>> rows_of(const RegionTable& regions) {
  std::vector<std::vector<int32_t>> rows;
  for (int32_t label = 1; label <= regions.count(); ++label) {
    const Region& r = regions[label];
    rows.push_back({r.min_x, r.max_x, r.min_y, r.max_y, r.valid});
  }
  return rows;
}

enum class Window { kNone, kNear, kTrailing };

Found by_pixels(Mask mask, Window window) {
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

Found by_runs(Mask mask, Window window, bool with_image) {
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
      if (x < mask.width) {
        found.grown.push_back(rows.at(x, y));
      } else {
        EXPECT_FALSE(rows.at(x, y)) << "a bit behind the width";
      }
    }
  }
  found.labels.assign(with_image ? mask.pixels.size() : 0, 99);
  RegionTable regions;
  label_regions(rows, regions, with_image ? found.labels.data() : nullptr);
  found.regions = rows_of(regions);
  return found;
}

void expect_alike(const Mask& mask, Window window) {
  SCOPED_TRACE(std::to_string(mask.width) + " x " + std::to_string(mask.height));
  Found expected = by_pixels(mask, window);
  ASSERT_EQ(expected.grown, by_runs(mask, window, true).grown);
  ASSERT_EQ(expected, by_runs(mask, window, true));
  expected.labels.clear();
  ASSERT_EQ(expected, by_runs(mask, window, false));
}

/// In every set: the near window is widened by a kernel.
TEST(Regions, FoundAsByPixels) {
  const std::string used(kernels().name);
  for (const KernelSet* set : runnable_kernels()) {
    ASSERT_TRUE(use_kernels(set->name));
    std::mt19937 random(4711);
    for (int scene = 0; scene < 1500; ++scene) {
      SCOPED_TRACE(std::string(set->name) + ", scene " + std::to_string(scene));
      const Mask mask = random_scene(random, scene % 10 == 0 ? 300 : 90);
      for (const Window window : {Window::kNone, Window::kNear, Window::kTrailing})
        expect_alike(mask, window);
      if (HasFatalFailure()) break;
    }
  }
  use_kernels(used);
}

/// Up to 255 labels fit a byte. From the 256th region on the pixel loop takes over: its labels 256 and 255
/// alternate.
TEST(Regions, MoreThanABytesWorth) {
  std::mt19937 random(7);
  for (const int regions : {254, 255, 256, 257, 300}) {
    for (int scene = 0; scene < 20; ++scene) {
      Mask mask{64, 64};
      for (int k = 0; k < regions; ++k)
        mask.paint(k % 21 * 3, k / 21 * 4, 2, 1 + static_cast<int>(random() % 3));
      for (int bars = 0; bars < scene % 4; ++bars) mask.paint(0, static_cast<int>(random() % 64), 64, 1);
      for (const Window window : {Window::kNone, Window::kTrailing}) expect_alike(mask, window);
    }
  }
}

}  // namespace
