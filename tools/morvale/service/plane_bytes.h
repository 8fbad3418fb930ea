#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>
#include <span>

namespace tool {

/// The bytes of a frame's planes. Those that nobody gave are zero and take no memory until they are touched:
/// a recording without pixels may claim any size.
class PlaneBytes {
 public:
  void copy(std::span<const uint8_t> bytes) {
    if (bytes.size() != size_) zeros(bytes.size());
    std::copy(bytes.begin(), bytes.end(), bytes_.get());
  }
  void zeros(size_t count) {
    // Not a vector, which would write the zeros; calloc takes fresh pages of the system as they are.
    bytes_.reset(static_cast<uint8_t*>(std::calloc(std::max<size_t>(count, 1), 1)));
    if (bytes_ == nullptr) throw std::bad_alloc();
    size_ = count;
  }

  uint8_t* data() { return bytes_.get(); }
  size_t size() const { return size_; }
  std::span<const uint8_t> bytes() const { return {bytes_.get(), size_}; }

 private:
  struct Free {
    void operator()(uint8_t* bytes) const { std::free(bytes); }
  };
  std::unique_ptr<uint8_t, Free> bytes_;
  size_t size_ = 0;
};

}  // namespace tool
