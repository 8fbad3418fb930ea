#include "bench/frames.h"

#include <map>
#include <tuple>

namespace bench {

FrameSource::FrameSource(int width, int height, size_t count) {
  using Frames = std::shared_ptr<const std::vector<Bytes>>;
  static std::map<std::tuple<int, int, size_t>, Frames> made;
  Frames& frames = made[{width, height, count}];
  if (frames == nullptr) {
    auto fresh = std::make_shared<std::vector<Bytes>>();
    for (size_t i = 0; i < count; ++i) {
      fresh->push_back(nv21_picture(width, height, static_cast<uint32_t>(11 + 2 * i)));
    }
    frames = fresh;
  }
  frames_ = frames;
}

}  // namespace bench
