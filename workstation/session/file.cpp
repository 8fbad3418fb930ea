#include "session/file.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <iterator>
#include <system_error>

#include "session/bundle.h"

namespace morvale::session {
namespace {

[[noreturn]] void fail(const std::filesystem::path& path, const char* what) {
  const int reason = errno;
  throw BundleError(path.string() + ": " + what +
                    (reason != 0 ? std::string(": ") + std::strerror(reason) : ""));
}

}  // namespace

OutputFile::OutputFile(const std::filesystem::path& path) : path_(path) {
  errno = 0;
  file_.reset(std::fopen(path.c_str(), "wbe"));
  if (file_ == nullptr) fail(path_, "cannot be made");
  std::setvbuf(file_.get(), nullptr, _IONBF,
               0);  // one write() a call: a line is there as a whole or not at all
}

void OutputFile::write(const void* data, size_t size) {
  errno = 0;
  if (size > 0 && std::fwrite(data, 1, size, file_.get()) != size) fail(path_, "cannot be written");
}

void OutputFile::close() {
  errno = 0;
  if (std::fclose(file_.release()) != 0) fail(path_, "cannot be written");
}

void read_bytes(const std::filesystem::path& path, uintmax_t offset, void* data, size_t size) {
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file) fail(path, "cannot be opened");
  file.seekg(static_cast<std::streamoff>(offset));
  if (!file.read(static_cast<char*>(data), static_cast<std::streamsize>(size))) fail(path, "ends too early");
}

std::string read_text(const std::filesystem::path& path, uintmax_t most) {
  const uintmax_t size = size_of_file(path);
  if (size > most)
    throw BundleError(path.string() + ": holds " + std::to_string(size) + " bytes; at most " +
                      std::to_string(most) + " are read");
  std::string text(size, '\0');
  read_bytes(path, 0, text.data(), text.size());
  return text;
}

bool read_lines(const std::filesystem::path& path, const std::function<void(const std::string&)>& take) {
  size_of_file(path);
  errno = 0;
  std::ifstream file(path, std::ios::binary);
  if (!file) fail(path, "cannot be opened");
  std::string line;
  for (;;) {
    line.resize(kLongestLine + 1);
    file.getline(line.data(), std::ssize(line));
    if (file.eof()) return file.gcount() > 0;
    if (file.bad()) fail(path, "cannot be read");
    if (file.fail())
      throw BundleError(path.string() + ": holds a line of more than " + std::to_string(kLongestLine) +
                        " bytes");
    line.resize(static_cast<size_t>(file.gcount()) - 1);
    take(line);
  }
}

std::filesystem::path path_inside(const std::filesystem::path& folder, const std::string& name) {
  std::error_code error;
  std::filesystem::path whole = std::filesystem::weakly_canonical(folder, error);
  if (!whole.has_filename()) whole = whole.parent_path();  // "missing/"
  const std::filesystem::path real = std::filesystem::weakly_canonical(folder / name, error);
  const auto [end, rest] = std::mismatch(whole.begin(), whole.end(), real.begin(), real.end());
  if (error || end != whole.end()) throw BundleError((folder / name).string() + ": leads out of the bundle");
  return folder / name;
}

uintmax_t size_of_file(const std::filesystem::path& path) {
  std::error_code error;
  if (!std::filesystem::is_regular_file(path, error))
    throw BundleError(path.string() + ": there is no such file");
  const uintmax_t size = std::filesystem::file_size(path, error);
  if (error) throw BundleError(path.string() + ": " + error.message());
  return size;
}

}  // namespace morvale::session
