/// The head of a float32 .npy file, so that a bundle's scores can be checked without reading them.
#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "session/bundle.h"

namespace morvale::session {

struct NpyHead {
  std::vector<int32_t> shape;
  uintmax_t data_offset;  ///< where the values begin
  size_t count;           ///< how many there are; the file holds exactly these
};

/// Reads `size` bytes at `offset` of a file into `data`.
using ReadAt = std::function<void(uintmax_t offset, void* data, size_t size)>;

/// The head of a file of `size` bytes. Throws BundleError, which begins with `name`, when it is not what
/// read_npy reads.
NpyHead read_npy_head(const std::string& name, uintmax_t size, const ReadAt& read);

/// The same of a file in memory, with its values.
NpyArray parse_npy(const std::string& name, std::span<const uint8_t> bytes);

/// The most bytes that a file of so many values may have.
uintmax_t most_npy_bytes(size_t values);

/// A file's bytes. Throws std::runtime_error when the values are not of this shape.
std::vector<uint8_t> npy_bytes(std::span<const int32_t> shape, std::span<const float> values);

}  // namespace morvale::session
