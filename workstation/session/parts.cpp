#include "session/parts.h"

#include <system_error>

#include "session/bundle.h"
#include "session/tar.h"

namespace morvale::session {
namespace {

namespace fs = std::filesystem;

class FolderParts final : public Parts {
 public:
  explicit FolderParts(const fs::path& folder) : folder_(folder) {}

  FilePart find(const std::string& name) const override { return path_inside(folder_, name); }

  std::vector<std::string> names(const std::string& folder) const override {
    std::vector<std::string> names;
    std::error_code error;
    for (const fs::directory_entry& entry : fs::directory_iterator(folder_ / folder, error))
      names.push_back(entry.path().filename().string());
    return names;
  }

  std::string path(const std::string& name) const override { return (folder_ / name).string(); }

 private:
  fs::path folder_;
};

class PackedParts final : public Parts {
 public:
  explicit PackedParts(const fs::path& file) : file_(file), entries_(tar_entries(file)) {}

  FilePart find(const std::string& name) const override {
    const auto found = entries_.find(name);
    if (found == entries_.end()) throw BundleError(path(name) + ": there is no such file");
    return {file_, found->second.offset, found->second.size, path(name)};
  }

  std::vector<std::string> names(const std::string& folder) const override {
    std::vector<std::string> names;
    const std::string prefix = folder + "/";
    for (auto at = entries_.lower_bound(prefix); at != entries_.end() && at->first.starts_with(prefix); ++at)
      names.push_back(at->first.substr(prefix.size()));
    return names;
  }

  std::string path(const std::string& name) const override { return (file_ / name).string(); }

 private:
  fs::path file_;
  std::map<std::string, TarEntry> entries_;
};

}  // namespace

std::unique_ptr<Parts> open_parts(const fs::path& bundle) {
  std::error_code error;
  if (fs::is_regular_file(bundle, error)) return std::make_unique<PackedParts>(bundle);
  return std::make_unique<FolderParts>(bundle);
}

}  // namespace morvale::session
