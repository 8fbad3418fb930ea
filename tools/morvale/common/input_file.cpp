#include "common/input_file.h"

#include <filesystem>
#include <fstream>

#include "common/command.h"

namespace tool {

namespace fs = std::filesystem;

void check_readable(const std::string& path) {
  std::error_code error;
  if (!fs::exists(path, error)) throw UsageError(path + ": there is no such file; check the name.");
  if (!fs::is_regular_file(path, error))
    throw UsageError(path + ": not a file; name photographs or raw frames.");
  if (!std::ifstream(path, std::ios::binary))
    throw UsageError(path + ": cannot be read; check its permissions.");
}

std::optional<uint64_t> file_length(const std::string& path) {
  std::error_code error;
  const uintmax_t length = fs::file_size(path, error);
  return error ? std::nullopt : std::optional<uint64_t>(length);
}

std::vector<uint8_t> read_bytes(const std::string& path, uint64_t count) {
  std::vector<uint8_t> bytes(count);
  std::ifstream file(path, std::ios::binary);
  if (!file.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(count)))
    throw UsageError(path + ": cannot be read; check its permissions.");
  return bytes;
}

}  // namespace tool
