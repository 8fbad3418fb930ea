#include "pictures/picture.h"

#include <array>
#include <cstring>
#include <filesystem>
#include <string_view>

namespace tool {
namespace {

struct LayoutRow {
  const char* name;
  std::array<std::string_view, 2> endings;
};

/// By Layout.
constexpr LayoutRow kLayouts[] = {
    {"NV21", {".nv21"}},       {"NV12", {".nv12"}},    {"RGB", {".rgb"}}, {"BGR", {".bgr"}},
    {"planar BGR", {".bgrp"}}, {"Y", {".y", ".gray"}}, {"HSV", {".hsv"}},
};

const LayoutRow& row_of(Layout layout) { return kLayouts[static_cast<size_t>(layout)]; }

/// Every `step`-th byte from `start` on.
Plane plane(const char* name, FrameSize size, const uint8_t* start, int64_t step, int64_t stride) {
  Plane plane{name, size, {}};
  plane.samples.reserve(static_cast<size_t>(size.pixels()));
  for (int64_t y = 0; y < size.height; ++y) {
    for (int64_t x = 0; x < size.width; ++x) plane.samples.push_back(start[y * stride + x * step]);
  }
  return plane;
}

std::vector<Plane> yuv_planes(const Picture& picture, int v_at, int u_at) {
  const FrameSize size = picture.size;
  const uint8_t* chroma = picture.bytes.data() + size.pixels();
  const int rows = (size.height + 1) / 2;
  const auto channel = [&](const char* name, int at) {
    return plane(name, {(size.width + 1 - at) / 2, rows}, chroma + at, 2, size.width);
  };
  return {plane("Y", size, picture.bytes.data(), 1, size.width), channel("V", v_at), channel("U", u_at)};
}

/// R, G, B from these places; a pixel is `step` bytes from the next.
std::vector<Plane> rgb_planes(const Picture& picture, std::array<int64_t, 3> places, int64_t step) {
  std::vector<Plane> planes;
  constexpr const char* kNames[] = {"R", "G", "B"};
  for (size_t k = 0; k < 3; ++k) {
    planes.push_back(
        plane(kNames[k], picture.size, picture.bytes.data() + places[k], step, step * picture.size.width));
  }
  return planes;
}

std::vector<Plane> hsv_planes(const Picture& picture) {
  std::vector<Plane> planes = {
      {"H", picture.size, {}, 360}, {"S", picture.size, {}}, {"V", picture.size, {}}};
  for (size_t at = 0; at + sizeof(float) <= picture.bytes.size(); at += sizeof(float)) {
    float sample = 0;
    std::memcpy(&sample, &picture.bytes[at], sizeof sample);
    planes[at / sizeof(float) % 3].samples.push_back(sample);
  }
  return planes;
}

}  // namespace

const char* name_of(Layout layout) { return row_of(layout).name; }

std::string endings_of(Layout layout) {
  const auto& [first, second] = row_of(layout).endings;
  return std::string(first) + (second.empty() ? "" : " or " + std::string(second));
}

std::optional<Layout> layout_of_file(const std::string& path) {
  const std::string ending = std::filesystem::path(path).extension().string();
  for (size_t k = 0; k < std::size(kLayouts); ++k) {
    for (const std::string_view known : kLayouts[k].endings) {
      if (!known.empty() && ending == known) return static_cast<Layout>(k);
    }
  }
  return std::nullopt;
}

std::vector<Plane> planes_of(const Picture& picture) {
  const int64_t pixels = picture.size.pixels();
  switch (picture.layout) {
    case Layout::kNv21:
      return yuv_planes(picture, 0, 1);
    case Layout::kNv12:
      return yuv_planes(picture, 1, 0);
    case Layout::kRgb:
      return rgb_planes(picture, {0, 1, 2}, 3);
    case Layout::kBgr:
      return rgb_planes(picture, {2, 1, 0}, 3);
    case Layout::kPlanarBgr:
      return rgb_planes(picture, {2 * pixels, pixels, 0}, 1);
    case Layout::kHsv:
      return hsv_planes(picture);
    case Layout::kY:
      break;
  }
  return {plane("Y", picture.size, picture.bytes.data(), 1, picture.size.width)};
}

}  // namespace tool
