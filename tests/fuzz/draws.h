/// What a fuzzer's input says, drawn piece by piece; zeros behind its end.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

/// Ends the process, so that the fuzzer keeps the input.
#define HOLDS(condition) \
  ((condition) ? void() : (std::fprintf(stderr, "%s:%d: %s\n", __FILE__, __LINE__, #condition), std::abort()))

class Draws {
 public:
  Draws(const uint8_t* data, size_t size) : next_(data), end_(data + size) {}

  bool done() const { return next_ == end_; }
  uint8_t byte() { return done() ? 0 : *next_++; }
  /// 0 .. limit - 1, for limits up to 256
  int below(int limit) { return byte() % limit; }
  template <class T, size_t kCount>
  const T& one_of(const T (&list)[kCount]) {
    return list[byte() % kCount];
  }
  /// Any bits.
  template <class T>
  T any() {
    T value{};
    const size_t count = std::min(sizeof value, static_cast<size_t>(end_ - next_));
    std::memcpy(&value, next_, count);
    next_ += count;
    return value;
  }
  /// Noise that follows from one byte, the same on every machine: pixels need not be drawn one by one.
  std::vector<uint8_t> noise(size_t count) {
    std::vector<uint8_t> bytes(count);
    uint32_t state = byte() * 2u + 1;
    for (uint8_t& out : bytes) out = static_cast<uint8_t>((state ^= state << 7, state ^= state >> 9) >> 3);
    return bytes;
  }

 private:
  const uint8_t *next_, *end_;
};
