/// How the image kernels are called: all of them with one source, one target and one set of arguments, as
/// they are and behind the library's checks.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <span>
#include <type_traits>
#include <vector>

#include <morvale/checked.h>

namespace kernel_list {

namespace checked = morvale::checked;
using checked::Status;

using Source = std::span<const uint8_t>;
using Target = std::span<uint8_t>;

struct Region {
  int x = 0, y = 0, width = 0, height = 0;
};

struct Blur {
  std::span<const uint8_t> grid = {};
  std::span<const uint16_t> weights = {};
  int radius = 0, bits = 8;
};

/// What any kernel asks for; each looks only at the size and at what its group names.
struct Arguments {
  int width = 0, height = 0;
  int out_width = 0, out_height = 0;  ///< of the result; out_width is also where a region's next row begins
  int right_margin = 0, bottom_margin = 0;
  int mode = 0, factor = 1;
  Region region = {};
  Blur blur = {};
};

/// Kernels that are called alike.
enum class Group {
  kSized,     ///< the size alone; the result has it too, or a fixed multiple or fraction
  kScaled,    ///< out_width, out_height
  kPadded,    ///< out_width, out_height, right_margin, bottom_margin
  kTurned,    ///< mode
  kByFactor,  ///< factor
  kRegion,    ///< region, out_width
  kBlurred,   ///< blur
};

template <class S>
using Result = std::conditional_t<std::is_pointer_v<S>, void, Status>;

/// A call of a kernel on pointers, or of its checked form on spans.
template <Group kGroup, auto kKernel, class S, class T>
Result<S> call(S s, T t, const Arguments& a) {
  const auto sized = [&](auto... rest) { return Result<S>(kKernel(s, t, a.width, a.height, rest...)); };
  if constexpr (kGroup == Group::kSized) return sized();
  if constexpr (kGroup == Group::kScaled) return sized(a.out_width, a.out_height);
  if constexpr (kGroup == Group::kPadded)
    return sized(a.out_width, a.out_height, a.right_margin, a.bottom_margin);
  if constexpr (kGroup == Group::kTurned) return sized(a.mode);
  if constexpr (kGroup == Group::kByFactor) return sized(a.factor);
  if constexpr (kGroup == Group::kRegion) {
    const auto [x, y, width, height] = a.region;
    return Result<S>(kKernel(s, t, a.width, x, y, width, height, a.out_width));
  }
  if constexpr (kGroup == Group::kBlurred) {
    const auto [grid, weights, radius, bits] = a.blur;
    if constexpr (std::is_pointer_v<S>)
      kKernel(s, t, grid.data(), a.width, a.height, weights.data(), radius, bits);
    else
      return kKernel(s, t, grid, a.width, a.height, weights, radius, bits);
  }
}

// ---- Kernels with more than one source or target, or of other types ----

inline auto behind(auto* plane, int width, int height) { return plane + ptrdiff_t{width} * height; }
template <class T>
std::span<T> behind(std::span<T> plane, int width, int height) {
  return plane.subspan(std::min(plane.size(), static_cast<size_t>(int64_t{width} * height)));
}

/// Chroma behind the luma of the source.
template <auto kKernel>
struct SourceJoined {
  auto operator()(auto s, auto t, int width, int height, auto... rest) const {
    return kKernel(s, behind(s, width, height), t, width, height, rest...);
  }
};
/// And of the target.
template <auto kKernel>
struct TargetJoined {
  auto operator()(auto s, auto t, int width, int height) const {
    return kKernel(s, t, behind(t, width, height), width, height);
  }
};

/// The target is aligned for floats. The kernel only reads its source, although its type does not say so.
inline void bgr_to_hsv(const uint8_t* s, uint8_t* t, int width, int height) {
  BGR2HSV(const_cast<uint8_t*>(s), reinterpret_cast<float*>(t), width, height);
}
inline Status checked_bgr_to_hsv(Source s, Target t, int width, int height) {
  return checked::BGR2HSV(s, {reinterpret_cast<float*>(t.data()), t.size() / sizeof(float)}, width, height);
}

/// More than the kernel runs past the end of each plane, where the width is no multiple of 8. On pointers
/// that room stays between the planes; behind checks it is cut out.
constexpr size_t kPlaneRoom = 8;
inline void nv21_to_planes(const uint8_t* s, uint8_t* t, int width, int height) {
  const size_t apart = static_cast<size_t>(int64_t{width} * height) + kPlaneRoom;
  uint8_t* const planes[] = {t, t + apart, t + 2 * apart};
  NV21toBGR_planar(s, planes, width, height);
}
inline Status checked_nv21_to_planes(Source s, Target t, int width, int height) {
  if (width < 0 || height < 0) return Status::kBadSize;
  const auto pixels = static_cast<size_t>(int64_t{width} * height);
  if (t.size() < 3 * pixels) return Status::kDestinationTooSmall;
  const auto plane = [&](size_t k) { return t.subspan(k * pixels, pixels); };
  if (width % 8 == 0) return checked::NV21toBGR_planar(s, {plane(0), plane(1), plane(2)}, width, height);
  std::array<std::vector<uint8_t>, 3> planes;
  for (auto& roomy : planes) roomy.resize(pixels + kPlaneRoom);
  const Status status = checked::NV21toBGR_planar(s, {planes[0], planes[1], planes[2]}, width, height);
  for (size_t k = 0; k < 3; ++k) std::copy_n(planes[k].begin(), pixels, plane(k).begin());
  return status;
}

}  // namespace kernel_list
