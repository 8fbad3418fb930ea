/// What the checked calls (checked.h) share: their verdict, and how far rows and planes reach.
#pragma once

#include <algorithm>
#include <cstdint>
#include <initializer_list>
#include <span>

namespace morvale::checked {

/// What became of a call. Nothing is written unless it is kOk.
enum class Status {
  kOk,                   ///< the kernel has run, if there was anything for it to do
  kBadSize,              ///< a size or another argument that the kernel is not made for; no buffer would do
  kSourceTooSmall,       ///< the kernel would read past the end of a source, a grid or a table of weights
  kDestinationTooSmall,  ///< the kernel would go past the end of a destination
};

/// One sentence for a person.
constexpr const char* message(Status status) {
  switch (status) {
    case Status::kOk:
      return "All buffers are large enough, and the kernel has run.";
    case Status::kBadSize:
      return "A size, stride, margin or other argument is outside what the kernel is made for.";
    case Status::kSourceTooSmall:
      return "A source buffer is shorter than the part that the kernel reads.";
    case Status::kDestinationTooSmall:
      return "A destination buffer is shorter than the part that the kernel touches.";
  }
  return "The status is unknown.";
}

/// Below this every product of sizes fits the kernels' own arithmetic (a 64-fold height in 32 bits) and the
/// reaches fit 64 bits.
constexpr int kSizeEnd = 1 << 25;
/// The scaling to any size counts source positions in 1/256 in 32 bits.
constexpr int kScaledSizeEnd = 1 << 23;

namespace detail {

constexpr bool within(std::initializer_list<int> sizes, int end = kSizeEnd) {
  return std::all_of(sizes.begin(), sizes.end(), [end](int s) { return s >= 0 && s < end; });
}

template <class T>
constexpr bool holds(std::span<T> buffer, int64_t reach) {
  return static_cast<uint64_t>(buffer.size()) >= static_cast<uint64_t>(reach);
}

constexpr int64_t even_up(int64_t n) { return (n + 1) / 2 * 2; }
constexpr int64_t eight_up(int64_t n) { return (n + 7) / 8 * 8; }

/// Rows `stride` apart, of which `last` bytes of the last one count. Nothing if there is no row or no byte.
constexpr int64_t rows_reach(int64_t rows, int64_t stride, int64_t last) {
  return rows < 1 || last < 1 ? 0 : (rows - 1) * stride + last;
}

constexpr int64_t luma_bytes(int64_t width, int64_t height) { return width * height; }

/// Chroma rows with a pair for every luma pixel: the pair of an odd last column ends one byte behind its row.
constexpr int64_t chroma_reach(int64_t width, int64_t height) {
  return rows_reach((height + 1) / 2, width, even_up(width));
}
constexpr int64_t nv21_reach(int64_t width, int64_t height) {
  return luma_bytes(width, height) + chroma_reach(width, height);
}

/// Calls a kernel with one source and one destination if both are long enough.
template <class S, class D, class Kernel, class... Arguments>
Status run(std::span<S> src, int64_t src_reach, std::span<D> dst, int64_t dst_reach, Kernel kernel,
           Arguments... arguments) {
  if (!holds(src, src_reach)) return Status::kSourceTooSmall;
  if (!holds(dst, dst_reach)) return Status::kDestinationTooSmall;
  kernel(src.data(), dst.data(), arguments...);
  return Status::kOk;
}

}  // namespace detail

}  // namespace morvale::checked
