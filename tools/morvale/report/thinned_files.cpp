#include "report/thinned_files.h"

#include <utility>

namespace tool {

void ThinnedFiles::add(std::vector<uint8_t> file) {
  const bool kept = wanted() && !file.empty();
  places_.emplace_back();
  if (!kept) return;
  places_.back() = files_.size();
  bytes_ += file.size();
  files_.push_back(std::move(file));
  fit(room_);
}

void ThinnedFiles::fit(size_t bytes) {
  while (bytes_ > bytes && files_.size() > 1) thin_out();
}

void ThinnedFiles::thin_out() {
  every_ *= 2;
  std::vector<std::vector<uint8_t>> kept;
  bytes_ = 0;
  for (size_t frame = 0; frame < places_.size(); ++frame) {
    std::optional<size_t>& place = places_[frame];
    if (!place) continue;
    if (frame % every_ != 0) {
      place.reset();
      continue;
    }
    bytes_ += files_[*place].size();
    kept.push_back(std::move(files_[*place]));
    place = kept.size() - 1;
  }
  files_ = std::move(kept);
}

}  // namespace tool
