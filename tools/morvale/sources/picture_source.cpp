/// A folder of pictures, in the order of their names, as a source of frames.
#include <algorithm>
#include <filesystem>
#include <vector>

#include "common/command.h"
#include "pictures/opencv_module.h"
#include "sources/frame_source.h"

namespace tool {
namespace {

namespace fs = std::filesystem;

bool is_digit(char c) { return c >= '0' && c <= '9'; }

/// The number at `at`, without its leading zeros; `at` moves behind it.
std::string digits_at(const std::string& text, size_t& at) {
  while (at < text.size() && text[at] == '0') ++at;
  const size_t begin = at;
  while (at < text.size() && is_digit(text[at])) ++at;
  return text.substr(begin, at - begin);
}

/// As people count: frame9 comes before frame10.
bool natural_less(const std::string& a, const std::string& b) {
  size_t i = 0, j = 0;
  while (i < a.size() && j < b.size()) {
    if (is_digit(a[i]) && is_digit(b[j])) {
      const std::string first = digits_at(a, i), second = digits_at(b, j);
      if (first.size() != second.size()) return first.size() < second.size();
      if (first != second) return first < second;
    } else if (a[i] != b[j]) {
      return a[i] < b[j];
    } else {
      ++i, ++j;
    }
  }
  if ((i == a.size()) != (j == b.size())) return i == a.size();
  return a < b;
}

std::vector<std::string> pictures_in(const std::string& path) {
  if (!fs::is_directory(path)) return {path};
  std::vector<std::string> files;
  std::error_code error;
  fs::directory_iterator entries(path, error);
  if (error) throw UsageError(path + ": cannot be read; check the folder's permissions.");
  for (const fs::directory_entry& entry : entries) {
    const std::string file = entry.path().string();
    if (entry.is_regular_file() && (entry.path().extension() == ".nv21" || opencv().is_picture(file)))
      files.push_back(file);
  }
  if (files.empty())
    throw UsageError(
        path + ": holds neither pictures nor a session.json; name a recording or a folder of pictures.");
  std::sort(files.begin(), files.end(), natural_less);
  return files;
}

class PictureSource final : public FrameSource {
 public:
  PictureSource(const std::string& path, const FrameShape& shape) : files_(pictures_in(path)), shape_(shape) {
    for (const std::string& file : files_) check_input(file, shape_);
  }

  std::optional<SourceFrame> next() override {
    if (next_ >= files_.size()) return std::nullopt;
    SourceFrame frame;
    frame.number = static_cast<int>(next_);
    frame.name = fs::path(files_[next_]).filename().string();
    frame.input = input_of(read_input(files_[next_], shape_));
    ++next_;
    return frame;
  }

  bool skip() override {
    if (next_ >= files_.size()) return false;
    ++next_;
    return true;
  }

  std::optional<int> count() const override { return static_cast<int>(files_.size()); }
  std::vector<std::string> files() const override { return files_; }

 private:
  std::vector<std::string> files_;
  FrameShape shape_;
  size_t next_ = 0;
};

}  // namespace

std::unique_ptr<FrameSource> make_picture_source(const std::string& folder_or_file, const FrameShape& shape) {
  return std::make_unique<PictureSource>(folder_or_file, shape);
}

}  // namespace tool
