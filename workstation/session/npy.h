/// The head of a float32 .npy file, so that a bundle's scores can be checked without reading them.
#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace morvale::session {

struct NpyHead {
  std::vector<int32_t> shape;
  uintmax_t data_offset;  ///< where the values begin
  size_t count;           ///< how many there are; the file holds exactly these
};

/// Throws BundleError when the file is not what read_npy reads.
NpyHead read_npy_head(const std::filesystem::path& file);

}  // namespace morvale::session
