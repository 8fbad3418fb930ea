/// Files whose failures say what the system said.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace morvale::session {

/// A file being written. Every failure is a BundleError that names the file.
class OutputFile {
 public:
  /// A new or emptied file.
  explicit OutputFile(const std::filesystem::path& path);

  /// Hands `size` bytes to the operating system; they survive a crash of this process.
  void write(const void* data, size_t size);

  /// Must be called once everything is written: some file systems tell of a full disk only here.
  void close();

 private:
  struct Closer {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  std::filesystem::path path_;
  std::unique_ptr<std::FILE, Closer> file_;
};

/// Where some bytes lie on the disk: a file, or a piece of one.
struct FilePart {
  /// All of a file. Throws BundleError when there is no such regular file.
  FilePart(const std::filesystem::path& path);
  FilePart(std::filesystem::path in, uintmax_t begin, uintmax_t bytes, std::string called)
      : file(std::move(in)), offset(begin), size(bytes), name(std::move(called)) {}

  std::filesystem::path file;
  uintmax_t offset, size;
  std::string name;  ///< for people
};

/// Reads `size` bytes at `offset` of the part into `data`; a shorter one is a BundleError.
void read_bytes(const FilePart& part, uintmax_t offset, void* data, size_t size);

/// All of it.
std::vector<uint8_t> read_all(const FilePart& part);

/// All of it as text. More than `most` bytes are a BundleError: a file that claims any size must not take as
/// much memory.
std::string read_text(const FilePart& part, uintmax_t most);

/// Calls `take` for every line, without its end, and returns whether the part ends within a line. A line of
/// more than kLongestLine bytes is a BundleError.
constexpr size_t kLongestLine = 64 * 1024;
bool read_lines(const FilePart& part, const std::function<void(const std::string&)>& take);

/// `name` in `folder`. A link that leads out of the folder is a BundleError: a bundle from elsewhere must not
/// make its reader open other files.
std::filesystem::path path_inside(const std::filesystem::path& folder, const std::string& name);

/// Throws BundleError when there is no such regular file.
uintmax_t size_of_file(const std::filesystem::path& path);

}  // namespace morvale::session
