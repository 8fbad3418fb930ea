/// The rounding mode of floating point.
#pragma once

#include <cstdint>

namespace morvale {

/// Rounds to nearest while it lives, and gives the calling thread its own mode back. A camera service may
/// have set another one; the records' bytes must not depend on it. Costs a register read where nothing is to
/// be changed. Both ends are calls, so that no arithmetic on memory moves past them.
class RoundToNearest {
 public:
  RoundToNearest();
  ~RoundToNearest();
  RoundToNearest(const RoundToNearest&) = delete;
  RoundToNearest& operator=(const RoundToNearest&) = delete;

 private:
  uint64_t callers_;  ///< the mode's bits as they were; 0 is to nearest
};

}  // namespace morvale
