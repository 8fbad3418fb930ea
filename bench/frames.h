/// The camera's frames, made once and shared by all that read them.
#pragma once

#include <memory>
#include <vector>

#include "bench/pictures.h"

namespace bench {

/// Frames of one size that come round and round. One is hot: it stays in the cache. Enough of them are cold,
/// as the camera's are: whatever is read of one has left the cache when its turn comes again.
class FrameSource {
 public:
  FrameSource(int width, int height, size_t count);

  const uint8_t* next() {
    turn_ = turn_ + 1 < frames_->size() ? turn_ + 1 : 0;
    return (*frames_)[turn_].data();
  }

 private:
  std::shared_ptr<const std::vector<Bytes>> frames_;
  size_t turn_ = 0;
};

constexpr size_t kHot = 1, kCold = 24;

}  // namespace bench
