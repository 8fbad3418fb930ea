/// Regions found word by word and run by run, against the pixel-by-pixel rule.
#include <gtest/gtest.h>

#include <random>
#include <string>

#include "kernels/kernel_set.h"
#include "kernels/region_cases.h"

namespace {

using namespace morvale;
using namespace region_cases;

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
  EXPECT_FALSE(use_kernels("none"));
  use_kernels(used);
}

/// Small and dense, with rows repeated: a region's right end may be reached in any of its rows and merges.
TEST(Regions, OfSmallDenseMasks) {
  std::mt19937 random(11);
  for (int scene = 0; scene < 20'000; ++scene) {
    SCOPED_TRACE(scene);
    Mask mask{1 + static_cast<int>(random() % 16), 1 + static_cast<int>(random() % 11)};
    for (int y = 0; y < mask.height; ++y) {
      const bool repeat = y > 0 && random() % 3 == 0;
      for (int x = 0; x < mask.width; ++x) mask.at(x, y) = repeat ? mask.at(x, y - 1) : random() % 2;
    }
    expect_alike(mask, Window::kNone);
    if (HasFatalFailure()) break;
  }
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
