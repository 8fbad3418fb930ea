#include "pictures/picture_size.h"

#include <charconv>
#include <filesystem>
#include <limits>
#include <string_view>

#include "common/command.h"

namespace tool {
namespace {

/// The decimal number that ends `text`, taken off it. Absent when there is none.
std::optional<int> take_trailing_number(std::string_view& text) {
  const size_t last_other = text.find_last_not_of("0123456789");
  const std::string_view digits = text.substr(last_other == std::string_view::npos ? 0 : last_other + 1);
  int number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (digits.empty() || error != std::errc()) return std::nullopt;
  text.remove_suffix(digits.size());
  return number;
}

bool take_suffix(std::string_view& text, std::string_view suffix) {
  if (!text.ends_with(suffix)) return false;
  text.remove_suffix(suffix.size());
  return true;
}

/// "WxH" at the end of `text`, taken off it.
std::optional<FrameSize> take_trailing_size(std::string_view& text) {
  const std::optional<int> height = take_trailing_number(text);
  if (!height || !take_suffix(text, "x")) return std::nullopt;
  const std::optional<int> width = take_trailing_number(text);
  if (!width) return std::nullopt;
  return FrameSize{*width, *height};
}

}  // namespace

std::string text_of(FrameSize size) { return std::to_string(size.width) + "x" + std::to_string(size.height); }

FrameSize parse_size_flag(const std::string& flag, const std::string& text) {
  std::string_view rest = text;
  const std::optional<FrameSize> size = take_trailing_size(rest);
  if (!size || !rest.empty())
    throw UsageError(flag + ": '" + text + "' is not a size; write it as 1920x1080.");
  const auto usable = [](int side) { return side >= 1 && side <= kLargestSide; };
  if (!usable(size->width) || !usable(size->height))
    throw UsageError(flag + ": the sides of " + text + " must be 1 to " + std::to_string(kLargestSide) + ".");
  return *size;
}

void check_frame_size(const std::string& what, FrameSize size) {
  const auto usable = [](int side) { return side >= 2 && side <= kLargestSide && side % 2 == 0; };
  if (!usable(size.width) || !usable(size.height))
    throw UsageError(what + ": the size " + text_of(size) +
                     " cannot be an NV21 frame; both sides must be even, 2 to " +
                     std::to_string(kLargestSide) + ".");
}

int checked_stride(const std::string& path, FrameSize size, std::optional<int> given) {
  const int stride = given.value_or(size.width);
  const std::string named = path + ": the stride " + std::to_string(stride);
  if (stride < size.width)
    throw UsageError(named + " is smaller than the width " + std::to_string(size.width) +
                     "; give a larger --stride.");
  // The library counts the bytes of a frame in 32 bits.
  if (int64_t{stride} * size.height * 3 / 2 > std::numeric_limits<int32_t>::max())
    throw UsageError(named + " makes a frame of more than 2 GiB; give a smaller --stride.");
  return stride;
}

FrameShape shape_from_name(const std::string& path) {
  const std::string stem = std::filesystem::path(path).stem().string();
  std::string_view rest = stem;
  FrameShape shape;
  const std::optional<int> stride = take_trailing_number(rest);
  if (stride && take_suffix(rest, "_s"))
    shape.stride = stride;
  else
    rest = stem;
  shape.size = take_trailing_size(rest);
  // "x1920x1080" or "take21920x1080" could be anything: the size must stand alone.
  if (!shape.size || !(rest.empty() || rest.ends_with('_'))) return {};
  return shape;
}

}  // namespace tool
