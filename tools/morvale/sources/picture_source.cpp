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

/// What lies in a folder, in the order of the names.
struct Folder {
  std::vector<std::string> pictures;  ///< paths
  std::vector<std::string> others;    ///< names of files that are none; hidden ones are not told of
};

Folder look_into(const std::string& path) {
  if (!fs::is_directory(path)) return {{path}, {}};
  Folder folder;
  std::error_code error;
  fs::directory_iterator entries(path, error);
  if (error) throw UsageError(path + ": cannot be read; check the folder's permissions.");
  for (const fs::directory_entry& entry : entries) {
    const std::string file = entry.path().string(), name = entry.path().filename().string();
    if (!entry.is_regular_file()) continue;
    if (entry.path().extension() == ".nv21" || opencv().is_picture(file))
      folder.pictures.push_back(file);
    else if (!name.starts_with('.'))
      folder.others.push_back(name);
  }
  if (folder.pictures.empty())
    throw UsageError(
        path + ": holds neither pictures nor a session.json; name a recording or a folder of pictures.");
  std::sort(folder.pictures.begin(), folder.pictures.end(), natural_less);
  std::sort(folder.others.begin(), folder.others.end(), natural_less);
  return folder;
}

class PictureSource final : public FrameSource {
 public:
  PictureSource(const std::string& path, const FrameShape& shape, bool keep_going)
      : folder_(look_into(path)), shape_(shape), keep_going_(keep_going) {
    if (keep_going_) return;
    for (const std::string& file : folder_.pictures) check_input(file, shape_);
  }

  std::optional<SourceFrame> next() override {
    while (next_ < folder_.pictures.size()) {
      SourceFrame frame;
      frame.number = static_cast<int>(next_);
      const std::string& file = folder_.pictures[next_++];
      frame.name = fs::path(file).filename().string();
      if (read(file, frame)) return frame;
    }
    return std::nullopt;
  }

  bool skip() override {
    if (next_ >= folder_.pictures.size()) return false;
    ++next_;
    return true;
  }

  std::optional<int> count() const override { return static_cast<int>(folder_.pictures.size()); }
  std::vector<std::string> files() const override { return folder_.pictures; }
  std::vector<std::string> passed_over() const override { return folder_.others; }
  std::vector<std::string> unusable() const override { return unusable_; }

 private:
  bool read(const std::string& file, SourceFrame& frame) {
    try {
      check_input(file, shape_);
      frame.input = input_of(read_input(file, shape_));
      return true;
    } catch (const UsageError& error) {
      if (!keep_going_) throw;
      complain(error.what());
      unusable_.push_back(frame.name);
      return false;
    }
  }

  Folder folder_;
  FrameShape shape_;
  bool keep_going_;
  size_t next_ = 0;
  std::vector<std::string> unusable_;
};

}  // namespace

std::unique_ptr<FrameSource> make_picture_source(const std::string& folder_or_file, const FrameShape& shape,
                                                 bool keep_going) {
  return std::make_unique<PictureSource>(folder_or_file, shape, keep_going);
}

}  // namespace tool
