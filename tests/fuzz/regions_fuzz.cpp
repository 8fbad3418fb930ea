/// The labeller of runs against the labeller of pixels, on any mask.
#include "fuzz/draws.h"
#include "kernels/kernel_set.h"
#include "kernels/region_cases.h"

using namespace region_cases;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  Draws draws(data, size);
  Mask mask{1 + draws.below(140), 1 + draws.below(50)};
  const auto window = draws.one_of({Window::kNone, Window::kNear, Window::kTrailing});
  const auto sets = morvale::runnable_kernels();
  morvale::use_kernels(sets[draws.byte() % sets.size()]->name);
  const bool dense = draws.below(2) == 1;
  if (dense) {  // a bit a pixel, the rows repeated
    for (size_t i = 0, bits = 0; i < mask.pixels.size(); ++i, bits >>= 1) {
      if (i % 8 == 0) bits = draws.byte();
      mask.pixels[i] = bits & 1;
    }
  }
  while (!dense && !draws.done()) {
    const int x = draws.below(mask.width), y = draws.below(mask.height);
    mask.paint(x, y, draws.below(64), draws.below(32));
  }
  Found expected = by_pixels(mask, window);
  HOLDS(expected == by_runs(mask, window, true));
  expected.labels.clear();
  HOLDS(expected == by_runs(mask, window, false));
  return 0;
}
