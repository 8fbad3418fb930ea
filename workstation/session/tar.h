/// The one file that a packed recording is: a tar of the recording's parts, as any tar lists and unpacks it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <map>
#include <span>
#include <string>

#include "session/file.h"

namespace morvale::session {

class TarWriter {
 public:
  /// A new or emptied file. All of it throws BundleError.
  explicit TarWriter(const std::filesystem::path& path) : file_(path) {}

  /// `name`: up to 99 characters.
  void add(const std::string& name, std::span<const uint8_t> bytes);
  void finish();

 private:
  OutputFile file_;
};

struct TarEntry {
  uintmax_t offset, size;  ///< of its bytes in the tar
};

/// The regular files in a tar by their names, without "./" in front. Throws BundleError for a file that is no
/// tar or is cut off, and for what no recording holds: other kinds of entries, names that lead out, a name
/// twice.
std::map<std::string, TarEntry> tar_entries(const std::filesystem::path& path);

}  // namespace morvale::session
