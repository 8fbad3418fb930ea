#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace tool {

/// Throws UsageError when there is no readable file of this name.
void check_readable(const std::string& path);

/// The length of a file in bytes, absent when it has none.
std::optional<uint64_t> file_length(const std::string& path);

/// The first `count` bytes of a file. Throws UsageError.
std::vector<uint8_t> read_bytes(const std::string& path, uint64_t count);

}  // namespace tool
