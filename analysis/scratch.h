/// Scratch memory of one analysis call: one block, carved, freed on every exit.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace morvale {

class Scratch {
 public:
  explicit Scratch(size_t bytes)
      : block_(std::make_unique_for_overwrite<uint8_t[]>(bytes)), next_(block_.get()) {}

  /// `count` values, uninitialised. Take the widest type first, so that every pointer is aligned.
  template <class T>
  T* take(size_t count) {
    T* values = reinterpret_cast<T*>(next_);
    next_ += count * sizeof(T);
    return values;
  }

 private:
  std::unique_ptr<uint8_t[]> block_;
  uint8_t* next_;
};

}  // namespace morvale
