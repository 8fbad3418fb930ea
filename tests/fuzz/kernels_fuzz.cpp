/// The image kernels in buffers of exactly the bytes that they ask for: every set gives the same.
#include "fuzz/any_kernel.h"
#include "kernels/kernel_set.h"

namespace {

using namespace any_kernel;

/// The first length that the call does not refuse with `refusal`, at most the buffer's.
template <class Call>
size_t first_accepted(size_t most, Status refusal, Call call) {
  size_t refused = 0, accepted = most;
  while (refused < accepted) {
    const size_t middle = (refused + accepted) / 2;
    if (call(middle) == refusal)
      refused = middle + 1;
    else
      accepted = middle;
  }
  return accepted;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static const Bytes sources(1 << 18);
  static Bytes targets(1 << 20);
  Draws draws(data, size);
  const Kernel& kernel = draws.one_of(kKernels);
  const Bytes grid = draws.noise(morvale::kBlurGridColumns * 5);
  Bytes weights(2 * 41);
  const Arguments a = draw_arguments(draws, kernel, grid, weights);
  if (kernel.checked(sources, targets, a) == Status::kBadSize) return 0;
  const Source all(sources);
  const size_t reads = first_accepted(all.size(), Status::kSourceTooSmall,
                                      [&](size_t n) { return kernel.checked(all.first(n), targets, a); });
  const Bytes source = draws.noise(reads);
  const size_t writes = first_accepted(targets.size(), Status::kDestinationTooSmall, [&](size_t n) {
    return kernel.checked(source, Target(targets).first(n), a);
  });
  const Bytes before = draws.noise(writes);
  Bytes expected;
  for (const morvale::KernelSet* set : morvale::runnable_kernels()) {
    morvale::use_kernels(set->name);
    Bytes target = before;
    HOLDS(kernel.checked(source, target, a) == Status::kOk);
    if (expected.empty()) expected = target;
    HOLDS(target == expected);
  }
  return 0;
}
