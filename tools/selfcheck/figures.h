/// What the check compares: digests with names.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

namespace morvale::selfcheck {

/// A running digest of 64 bits over words of eight bytes, in FNV's manner. Every step is one to one, so a
/// single changed word never goes unseen.
class Digest {
 public:
  void add(const void* data, size_t bytes) {
    const auto* p = static_cast<const uint8_t*>(data);
    for (; bytes >= sizeof(uint64_t); p += sizeof(uint64_t), bytes -= sizeof(uint64_t))
      add_word(word_at(p, 8));
    if (bytes > 0) add_word(word_at(p, bytes));
  }
  template <class T>
  void add(const T& value) {
    static_assert(std::has_unique_object_representations_v<T> || std::is_floating_point_v<T>);
    add(&value, sizeof value);
  }
  uint64_t value() const { return state_; }

 private:
  static uint64_t word_at(const uint8_t* p, size_t bytes) {
    uint64_t word = 0;
    std::memcpy(&word, p, bytes);
    return word;
  }
  void add_word(uint64_t word) {
    state_ = (state_ ^ word) * 0x100000001b3;
    state_ ^= state_ >> 32;
  }

  uint64_t state_ = 0xcbf29ce484222325;
};

/// "NV21toRGB", or "front 640x480: humanRatio".
struct Figure {
  std::string name;
  uint64_t digest;
};
using Figures = std::vector<Figure>;

}  // namespace morvale::selfcheck
