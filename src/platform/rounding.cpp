#include "platform/rounding.h"

#if defined(__x86_64__)
#include <xmmintrin.h>
#endif

namespace morvale {
namespace {

#if defined(__x86_64__)
constexpr uint64_t kModeBits = _MM_ROUND_MASK;
uint64_t control() { return _mm_getcsr(); }
void set_control(uint64_t bits) { _mm_setcsr(static_cast<unsigned>(bits)); }
#elif defined(__aarch64__)
constexpr uint64_t kModeBits = uint64_t{3} << 22;  // FPCR.RMode
uint64_t control() {
  uint64_t bits;
  asm volatile("mrs %0, fpcr" : "=r"(bits));
  return bits;
}
void set_control(uint64_t bits) { asm volatile("msr fpcr, %0" : : "r"(bits)); }
#else
#error "The rounding mode of this processor is not known here."
#endif

void set_mode(uint64_t mode) { set_control((control() & ~kModeBits) | mode); }

}  // namespace

RoundToNearest::RoundToNearest() : callers_(control() & kModeBits) {
  if (callers_ != 0) set_mode(0);
}

RoundToNearest::~RoundToNearest() {
  if (callers_ != 0) set_mode(callers_);
}

}  // namespace morvale
