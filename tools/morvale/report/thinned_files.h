/// One file a frame, of which a long run keeps every second, every fourth, and so on.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace tool {

class ThinnedFiles {
 public:
  /// `room`: bytes that are kept while the frames go by.
  explicit ThinnedFiles(size_t room) : room_(room) {}

  /// Whether the next frame's file would be kept: else it need not be made.
  bool wanted() const { return places_.size() % every_ == 0; }
  /// The next frame's file; empty: it has none.
  void add(std::vector<uint8_t> file);

  /// Leaves files out until the rest takes no more than so many bytes.
  void fit(size_t bytes);

  /// The place of each frame's file in files().
  const std::vector<std::optional<size_t>>& places() const { return places_; }
  const std::vector<std::vector<uint8_t>>& files() const { return files_; }

 private:
  void thin_out();

  size_t room_;
  size_t bytes_ = 0;
  size_t every_ = 1;  ///< only every so many frames keep a file
  std::vector<std::optional<size_t>> places_;
  std::vector<std::vector<uint8_t>> files_;
};

}  // namespace tool
