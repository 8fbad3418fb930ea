/// A picture in one of the layouts that the kernels take and give, as a raw file holds it.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "kernel_list/layout.h"
#include "pictures/picture_size.h"

namespace tool {

using kernel_list::Layout;

/// What the layout is called in messages and tables.
const char* name_of(Layout layout);
/// The file endings of a layout: ".y or .gray".
std::string endings_of(Layout layout);
/// By a raw file's ending; absent for anything else.
std::optional<Layout> layout_of_file(const std::string& path);

inline int64_t byte_count(Layout layout, FrameSize size) {
  return kernel_list::byte_count(layout, size.width, size.height);
}

struct Picture {
  Layout layout = Layout::kY;
  FrameSize size;
  std::vector<uint8_t> bytes;
};

/// One channel of a picture, for looking at its samples.
struct Plane {
  std::string name;
  FrameSize size;
  std::vector<float> samples;
  float peak = 255;  ///< the largest sample that the channel can have
};

/// The channels, every byte of the picture in one of them: Y, V, U; R, G, B; Y; or H, S, V. With an odd width
/// the last U of each chroma row has no byte, so the U plane is a column narrower than the V plane.
std::vector<Plane> planes_of(const Picture& picture);

}  // namespace tool
