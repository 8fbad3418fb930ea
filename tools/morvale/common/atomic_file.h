#pragma once

#include <cstdint>
#include <filesystem>
#include <vector>

namespace tool {

/// Writes a file under a temporary name beside it and renames it, so that nobody ever sees half of it. A link
/// stays, and the file that it leads to is written; a device or pipe is written into. Throws RunError, and
/// leaves nothing behind, when that fails.
void write_file(const std::filesystem::path& path, const std::vector<uint8_t>& bytes);

}  // namespace tool
