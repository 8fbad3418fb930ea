/// Files whose failures say what the system said.
#pragma once

#include <cstdio>
#include <filesystem>
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

std::string read_text(const std::filesystem::path& path);

/// Throws BundleError when there is no such regular file.
uintmax_t size_of_file(const std::filesystem::path& path);

}  // namespace morvale::session
