#include "kernels/kernel_set.h"

#include <vector>

#include "kernels/processor.h"

namespace morvale {

// Each set is defined where it is compiled: kernels/set_portable.cpp, and kernels/set_simd.cpp once per
// variant.
extern const KernelSet kPortableKernels;
#if defined(__x86_64__)
namespace avx2 {
extern const KernelSet kKernels;
}
namespace avx512 {
extern const KernelSet kKernels;
}
#elif defined(__aarch64__)
namespace neon {
extern const KernelSet kKernels;
}
#endif

namespace {

constexpr const KernelSet* kBuilt[] = {
    &kPortableKernels,
#if defined(__x86_64__)
    &avx2::kKernels,
    &avx512::kKernels,
#elif defined(__aarch64__)
    &neon::kKernels,
#endif
};

std::vector<const KernelSet*> find_runnable() {
  std::vector<const KernelSet*> sets;
  for (const std::string_view name : runnable_kernel_names()) {
    for (const KernelSet* set : kBuilt) {
      if (set->name == name) sets.push_back(set);
    }
  }
  return sets;
}

const KernelSet* find(std::string_view name) {
  for (const KernelSet* set : runnable_kernels()) {
    if (set->name == name) return set;
  }
  return nullptr;
}

// Portable until the library's initialisers have run: a kernel may be called from another initialiser.
constinit const KernelSet* in_use = &kPortableKernels;
[[maybe_unused]] const bool chosen = (in_use = find(choose_kernels().name), true);

}  // namespace

std::span<const KernelSet* const> runnable_kernels() {
  static const std::vector<const KernelSet*> sets = find_runnable();
  return sets;
}

const KernelSet& kernels() { return *in_use; }

bool use_kernels(std::string_view name) {
  const KernelSet* set = find(name);
  if (set != nullptr) in_use = set;
  return set != nullptr;
}

}  // namespace morvale
