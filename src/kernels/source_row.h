/// A row that the resampling loops read from. A sample has one byte, or two for a chroma pair.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

namespace morvale {

/// One row to read from. A column past `last` reads as `last`, which is at least 0.
struct SourceRow {
  const uint8_t* data;
  int last;
};

// What the portable loops share. A namespace of this file's own in each of them: nothing for the linker to
// merge with code that was compiled for another processor.
namespace portable {
namespace {

template <int kChannels>
int at(const SourceRow& row, int column, int channel) {
  return row.data[ptrdiff_t{kChannels} * std::min(column, row.last) + channel];
}

/// Bytes of a row of `width` that belong to sample x: fewer than kChannels where the row ends inside it.
template <int kChannels>
int channels(int width, int x) {
  return std::min(kChannels, width - kChannels * x);
}

}  // namespace
}  // namespace portable
}  // namespace morvale
