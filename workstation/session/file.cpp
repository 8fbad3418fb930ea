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

FilePart::FilePart(const std::filesystem::path& path)
    : FilePart(path, 0, size_of_file(path), path.string()) {}

namespace {

std::ifstream opened(const FilePart& part) {
  errno = 0;
  std::ifstream file(part.file, std::ios::binary);
  if (!file) fail(part.file, "cannot be opened");
  return file;
}

}  // namespace

void read_bytes(const FilePart& part, uintmax_t offset, void* data, size_t size) {
  std::ifstream file = opened(part);
  file.seekg(static_cast<std::streamoff>(part.offset + offset));
  const bool inside = offset <= part.size && size <= part.size - offset;
  if (!inside || !file.read(static_cast<char*>(data), static_cast<std::streamsize>(size)))
    fail(part.name, "ends too early");
}

std::vector<uint8_t> read_all(const FilePart& part) {
  std::vector<uint8_t> bytes(part.size);
  read_bytes(part, 0, bytes.data(), bytes.size());
  return bytes;
}

std::string read_text(const FilePart& part, uintmax_t most) {
  if (part.size > most)
    throw BundleError(part.name + ": holds " + std::to_string(part.size) + " bytes; at most " +
                      std::to_string(most) + " are read");
  std::string text(part.size, '\0');
  read_bytes(part, 0, text.data(), text.size());
  return text;
}

bool read_lines(const FilePart& part, const std::function<void(const std::string&)>& take) {
  std::ifstream file = opened(part);
  file.seekg(static_cast<std::streamoff>(part.offset));
  std::string line;
  for (uintmax_t left = part.size; left > 0;) {
    const auto most = static_cast<std::streamsize>(std::min<uintmax_t>(kLongestLine, left));
    line.resize(static_cast<size_t>(most) + 1);
    file.getline(line.data(), most + 1);
    const auto taken = static_cast<uintmax_t>(file.gcount());  // with the newline
    if (file.bad()) fail(part.name, "cannot be read");
    if (file.eof() || taken > left) return true;
    if (file.fail() && left <= kLongestLine) return true;
    if (file.fail())
      throw BundleError(part.name + ": holds a line of more than " + std::to_string(kLongestLine) + " bytes");
    left -= taken;
    line.resize(taken - 1);
    take(line);
  }
  return false;
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
