/// Files whose failures say what the system said.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>

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

/// Reads `size` bytes at `offset` into `data`; a shorter file is a BundleError.
void read_bytes(const std::filesystem::path& path, uintmax_t offset, void* data, size_t size);

/// The whole file. One of more than `most` bytes is a BundleError: a file that claims any size must not take
/// as much memory.
std::string read_text(const std::filesystem::path& path, uintmax_t most);

/// Calls `take` for every line, without its end, and returns whether the file ends within a line. A line of
/// more than kLongestLine bytes is a BundleError.
constexpr size_t kLongestLine = 64 * 1024;
bool read_lines(const std::filesystem::path& path, const std::function<void(const std::string&)>& take);

/// `name` in `folder`. A link that leads out of the folder is a BundleError: a bundle from elsewhere must not
/// make its reader open other files.
std::filesystem::path path_inside(const std::filesystem::path& folder, const std::string& name);

/// Throws BundleError when there is no such regular file.
uintmax_t size_of_file(const std::filesystem::path& path);

}  // namespace morvale::session
