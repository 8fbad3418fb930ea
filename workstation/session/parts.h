/// The files of a bundle by their names in it, wherever they lie: in a folder, or in one packed file.
#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "session/file.h"

namespace morvale::session {

class Parts {
 public:
  virtual ~Parts() = default;

  /// Throws BundleError where the bundle has none of this name.
  virtual FilePart find(const std::string& name) const = 0;
  /// The names below `folder`, without it.
  virtual std::vector<std::string> names(const std::string& folder) const = 0;
  /// What people call the file.
  virtual std::string path(const std::string& name) const = 0;
};

/// The ending of a packed recording's name.
inline constexpr const char* kPackedExtension = ".morvale";

/// `bundle` is a folder, or a file, which must be a packed recording. Throws BundleError.
std::unique_ptr<Parts> open_parts(const std::filesystem::path& bundle);

}  // namespace morvale::session
