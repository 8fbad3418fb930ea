/// Scratch memory of one analysis call: one block, carved, given back on every exit. Blocks are kept from one
/// frame to the next, for new memory would fault in every page anew.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

namespace morvale {

class Scratch {
 public:
  explicit Scratch(size_t bytes);
  ~Scratch();
  Scratch(const Scratch&) = delete;
  Scratch& operator=(const Scratch&) = delete;

  /// `count` values, uninitialised. Take the widest type first, so that every pointer is aligned.
  template <class T>
  T* take(size_t count) {
    T* values = reinterpret_cast<T*>(next_);
    next_ += count * sizeof(T);
    return values;
  }

 private:
  std::unique_ptr<uint8_t[]> own_;  // when the kept blocks do not serve
  uint8_t* next_;
};

/// Frees the kept blocks; no Scratch may live. The next one takes new memory.
void free_scratch();

}  // namespace morvale
