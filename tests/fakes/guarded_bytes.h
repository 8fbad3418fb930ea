/// Byte buffers that notice when a kernel leaves them, the patterns they are filled with, and the comparison
/// that names the first wrong byte. Plain mmap and mprotect: they work alike under the sanitizers and in an
/// emulator.
#pragma once

#include <gtest/gtest.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <new>
#include <random>
#include <span>
#include <sstream>
#include <string>
#include <vector>

namespace guarded {

using Bytes = std::vector<uint8_t>;

/// The side on which a buffer touches forbidden memory.
enum class Edge { kFront, kBack };
constexpr std::array<Edge, 2> kEdges = {Edge::kFront, Edge::kBack};

/// What the bytes around a buffer hold: no two neighbours are equal, so a copied canary shows too.
constexpr uint8_t canary(size_t index) { return static_cast<uint8_t>(0xA5U ^ (index * 29U)); }

inline void expect_canaries(std::span<const uint8_t> strip, const char* where) {
  for (size_t i = 0; i < strip.size(); ++i) {
    if (strip[i] == canary(i)) continue;
    ADD_FAILURE() << "stray write " << where << ", canary " << i << " of " << strip.size();
    return;
  }
}

/// Exactly `size` bytes between two strips of canaries, for destinations. A stray write fails the running
/// test when the buffer goes out of scope, so the trace of the case is still there; reads are not noticed.
class CanaryBytes {
 public:
  explicit CanaryBytes(size_t size) : size_(size), memory_(size + 2 * kStrip) {
    for (size_t i = 0; i < kStrip; ++i) memory_[i] = memory_[kStrip + size_ + i] = canary(i);
  }
  explicit CanaryBytes(const Bytes& content) : CanaryBytes(content.size()) {
    std::copy(content.begin(), content.end(), data());
  }
  CanaryBytes(const CanaryBytes&) = delete;
  CanaryBytes& operator=(const CanaryBytes&) = delete;
  ~CanaryBytes() {
    const std::span<const uint8_t> memory(memory_);
    expect_canaries(memory.first(kStrip), "before the buffer");
    expect_canaries(memory.last(kStrip), "behind the buffer");
  }

  uint8_t* data() { return memory_.data() + kStrip; }
  std::span<const uint8_t> bytes() { return {data(), size_}; }

 private:
  static constexpr size_t kStrip = 4096;
  size_t size_;
  Bytes memory_;
};

/// A copy of `content` that begins right behind (kFront) or ends right before (kBack) a page without access:
/// a read or write past that edge ends the process. Writes past the other edge meet canaries, as above. A
/// test that allows a kernel some bytes beyond its picture makes them part of the content.
class GuardedBytes {
 public:
  GuardedBytes(const Bytes& content, Edge edge) : size_(content.size()) {
    const auto page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    room_ = (size_ / page + 1) * page;
    mapped_ = room_ + 2 * page;
    void* const pages = mmap(nullptr, mapped_, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (pages == MAP_FAILED) throw std::bad_alloc();
    first_ = static_cast<uint8_t*>(pages) + page;
    if (mprotect(first_, room_, PROT_READ | PROT_WRITE) != 0) throw std::bad_alloc();
    before_ = edge == Edge::kFront ? 0 : room_ - size_;
    for (size_t i = 0; i < before_; ++i) first_[i] = canary(i);
    for (size_t i = before_ + size_; i < room_; ++i) first_[i] = canary(i - before_ - size_);
    std::copy(content.begin(), content.end(), data());
  }
  GuardedBytes(const GuardedBytes&) = delete;
  GuardedBytes& operator=(const GuardedBytes&) = delete;
  ~GuardedBytes() {
    expect_canaries({first_, before_}, "before the buffer");
    expect_canaries({first_ + before_ + size_, room_ - before_ - size_}, "behind the buffer");
    munmap(first_ - (mapped_ - room_) / 2, mapped_);
  }

  uint8_t* data() { return first_ + before_; }
  std::span<const uint8_t> bytes() { return {data(), size_}; }

 private:
  size_t size_, room_ = 0, mapped_ = 0, before_ = 0;
  uint8_t* first_ = nullptr;
};

/// Seeded random bytes find the common slips; the extremes find sums that leave their type or miss a clamp.
enum class Pattern { kRandom, kZeroOrFull, kAlternating, kFull };
constexpr std::array<Pattern, 4> kPatterns = {Pattern::kRandom, Pattern::kZeroOrFull, Pattern::kAlternating,
                                              Pattern::kFull};

inline Bytes pattern_bytes(Pattern pattern, size_t size, uint32_t seed) {
  std::mt19937 random(seed);
  Bytes bytes(size);
  for (size_t i = 0; i < size; ++i) {
    const auto draw = static_cast<uint32_t>(random()) >> 11;
    switch (pattern) {
      case Pattern::kRandom:
        bytes[i] = static_cast<uint8_t>(draw);
        break;
      case Pattern::kZeroOrFull:
        bytes[i] = draw % 2 == 0 ? 0 : 255;
        break;
      case Pattern::kAlternating:
        bytes[i] = i % 2 == 0 ? 0 : 255;
        break;
      case Pattern::kFull:
        bytes[i] = 255;
        break;
    }
  }
  return bytes;
}

inline Bytes random_bytes(size_t size, uint32_t seed) { return pattern_bytes(Pattern::kRandom, size, seed); }

/// The numbers of a text: tables of small pictures stay readable as lines of text.
inline Bytes bytes_of(const std::string& text) {
  std::istringstream numbers(text);
  Bytes bytes;
  for (int number = 0; numbers >> number;) bytes.push_back(static_cast<uint8_t>(number));
  return bytes;
}

/// Sizes for which the kernels that check their sizes write nothing.
constexpr std::array<std::array<int, 2>, 4> kEmptySizes = {{{0, 8}, {8, 0}, {-8, 8}, {8, -1}}};

inline std::string size_text(int width, int height) {
  return std::to_string(width) + "x" + std::to_string(height);
}

/// Fails with the position of the first difference, counted in rows of `row_bytes`.
inline void expect_same(const Bytes& expected, std::span<const uint8_t> actual, size_t row_bytes,
                        const std::string& what) {
  ASSERT_EQ(expected.size(), actual.size()) << what;
  for (size_t i = 0; i < expected.size(); ++i) {
    if (expected[i] == actual[i]) continue;
    ADD_FAILURE() << what << ": byte " << i << " (row " << i / row_bytes << ", byte " << i % row_bytes
                  << ") is " << int{actual[i]} << ", not " << int{expected[i]};
    return;
  }
}

}  // namespace guarded
