#include "common/atomic_file.h"

#include <unistd.h>

#include <fstream>
#include <string>
#include <system_error>

#include "common/command.h"

namespace tool {

void write_file(const std::filesystem::path& path, const std::vector<uint8_t>& bytes) {
  std::filesystem::path temporary = path;
  temporary += ".part" + std::to_string(getpid());
  std::ofstream file(temporary, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.close();
  std::error_code error;
  if (file) std::filesystem::rename(temporary, path, error);
  if (file && !error) return;
  std::error_code ignored;
  std::filesystem::remove(temporary, ignored);
  throw RunError("cannot write " + path.string() + "; check the folder's permissions and free space.");
}

}  // namespace tool
