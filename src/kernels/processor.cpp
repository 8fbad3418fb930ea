#include "kernels/processor.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

namespace morvale {
namespace {

std::vector<std::string_view> find_runnable() {
  std::vector<std::string_view> names{"portable"};
#if defined(__x86_64__)
  if (__builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma")) names.push_back("avx2");
  // Byte permutations over two registers are what this set is for; the rest of it is the AVX2 text.
  // never run: on a processor without these
  if (names.size() > 1 && __builtin_cpu_supports("avx512vl") && __builtin_cpu_supports("avx512bw") &&
      __builtin_cpu_supports("avx512vbmi")) {
    names.push_back("avx512");
  }
#elif defined(__aarch64__)
  names.push_back("neon");
#endif
  return names;
}

/// The library's only look at its caller's environment. On a device, where the caller has privileges, it is
/// left out.
const char* wished_set() {
#if defined(MORVALE_KERNELS_FROM_ENVIRONMENT)
  return std::getenv("MORVALE_KERNELS");
#else
  return nullptr;
#endif
}

}  // namespace

std::span<const std::string_view> runnable_kernel_names() {
  static const std::vector<std::string_view> names = find_runnable();
  return names;
}

KernelChoice choose_kernels() {
  const std::span<const std::string_view> names = runnable_kernel_names();
  const char* wish = wished_set();
  if (wish == nullptr || *wish == '\0') return {names.back(), {}};
  const auto found = std::find(names.begin(), names.end(), std::string_view(wish));
  return found != names.end() ? KernelChoice{*found, {}} : KernelChoice{names.back(), wish};
}

}  // namespace morvale
