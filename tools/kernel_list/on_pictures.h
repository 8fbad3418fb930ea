/// The kernels on pictures whose memory ends with them, for whoever has no room to give behind a picture.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "kernel_list/kernel_list.h"

namespace kernel_list {

struct Size {
  int width = 0, height = 0;
};

/// Of the picture that a kernel makes of these arguments.
constexpr Size result_size(const Kernel& kernel, const Arguments& a) {
  const auto [wide, high, divisor] = kernel.ratio;
  if (kernel.group == kTurned && (a.mode == 0 || a.mode == 2)) return {a.height, a.width};
  if (kernel.group == kScaled || kernel.group == kPadded) return {a.out_width, a.out_height};
  if (kernel.group == kByFactor) return {a.factor * a.width, a.factor * a.height};
  if (kernel.group == kRegion) return {wide * a.region.width, high * a.region.height};
  return {wide * a.width / divisor, high * a.height / divisor};
}

/// A picture's bytes with `room` more behind them, which repeat its last row: some kernels read on where a
/// weight is not 0.
inline std::vector<uint8_t> with_last_row_repeated(Source picture, size_t row, size_t room) {
  std::vector<uint8_t> bytes(picture.size() + room);
  std::copy(picture.begin(), picture.end(), bytes.begin());
  if (row <= picture.size())
    for (size_t at = picture.size(); at < bytes.size(); ++at) bytes[at] = bytes[at - row];
  return bytes;
}

/// Runs a kernel on copies with room behind them, and gives the result back without it. For what the kernel
/// leaves as it was the target must be filled before.
inline Status run_with_room(const Kernel& kernel, Source source, Target target, const Arguments& arguments) {
  // More than any kernel reaches: mirroring takes up to twice the width in three bytes a pixel, averaging by
  // large ratios the ratio in rows; the checked calls watch over it.
  const int widest = std::max(arguments.width, result_size(kernel, arguments).width);
  const auto room = [widest](size_t bytes) { return bytes / 64 + 6 * static_cast<size_t>(widest) + 64; };
  const auto row = static_cast<size_t>(row_bytes(kernel.takes, arguments.width));
  std::vector<uint8_t> result(target.begin(), target.end());
  result.resize(target.size() + room(target.size()));
  const Status status =
      kernel.checked(with_last_row_repeated(source, row, room(source.size())), result, arguments);
  if (status == Status::kOk) std::copy_n(result.begin(), target.size(), target.begin());
  return status;
}

}  // namespace kernel_list
