#include "common/atomic_file.h"

#include <unistd.h>

#include <fstream>
#include <string>
#include <system_error>

#include "common/command.h"

namespace tool {

namespace {

namespace fs = std::filesystem;

bool put(const fs::path& path, const std::vector<uint8_t>& bytes) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.close();
  return file.good();
}

bool put_at_once(const fs::path& path, const std::vector<uint8_t>& bytes) {
  fs::path temporary = path;
  temporary += ".part" + std::to_string(getpid());
  std::error_code error;
  if (put(temporary, bytes)) {
    fs::rename(temporary, path, error);
    if (!error) return true;
  }
  fs::remove(temporary, error);
  return false;
}

}  // namespace

void write_file(const fs::path& path, const std::vector<uint8_t>& bytes) {
  std::error_code error;
  const fs::path target = fs::is_symlink(path, error) ? fs::weakly_canonical(path, error) : path;
  const bool in_place = fs::exists(target, error) && fs::is_other(target, error);
  if (!(in_place ? put(target, bytes) : put_at_once(target, bytes)))
    throw RunError("cannot write " + path.string() + "; check the folder's permissions and free space.");
}

}  // namespace tool
