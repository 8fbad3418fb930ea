#include "session/file.h"

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <fstream>
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

std::string read_text(const std::filesystem::path& path) {
  std::string text(size_of_file(path), '\0');
  read_bytes(path, 0, text.data(), text.size());
  return text;
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
