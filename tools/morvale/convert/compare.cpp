/// `morvale compare`: how far two pictures are apart.
#include <cmath>
#include <cstdio>

#include "common/command.h"
#include "common/options.h"
#include "pictures/opencv_module.h"
#include "pictures/plane_difference.h"
#include "session/json.h"

namespace tool {
namespace {

using morvale::session::Json;

constexpr const char* kIntroduction =
    "Compares two pictures of the same size, channel by channel: PSNR, SSIM, the largest difference, and "
    "how\n"
    "many samples (bytes, or floats of HSV) differ.\n";

constexpr const char* kExamples = R"(Examples:
  morvale compare before.png after.jpg
  morvale compare --tolerance 1 expected_640x480.nv21 found_640x480.nv21
      Exit status 0 as long as no byte differs by more than 1.
  morvale compare --size 64x48 --json a.y b.y

Files are raw, told by their endings (.nv21, .nv12, .rgb, .bgr, .bgrp, .y or .gray, .hsv; sizes from the
names NAME_WxH.ENDING or from --size), or pictures of any image format. NV21 and NV12 have the channels Y,
V, U; colour pictures of every kind R, G, B; so these can be compared with each other. A grey picture goes
with a plane too.

PSNR is 10 log10(255^2 / mean squared difference) in dB (peak 360 for hues; "all" weighs each channel by its
peak), "inf" for equal channels. SSIM is the mean structural similarity with a Gaussian window of 11 x 11,
standard deviation 1.5, K1 = 0.01, K2 = 0.03 and L = 255, over the positions whose window lies inside the
channel (all positions along a side below 11); 1 for equal channels, none for HSV. In the JSON an infinite
PSNR and a missing SSIM are null, and so is a largest difference to what is no number.

Exit status: 0 the same (or within the tolerance), 1 different, 2 the command line or a file cannot be used.
)";

struct CompareOptions {
  std::string a, b;
  std::optional<FrameSize> size;
  double tolerance = 0;
  bool json = false;
};

std::optional<CompareOptions> parse_compare_options(int argc, char** argv) {
  CompareOptions options;
  std::optional<std::string> size;
  const CommandLine line{"morvale compare",
                         kIntroduction,
                         kExamples,
                         {{"A", &options.a, "The first file", "", Required()},
                          {"B", &options.b, "The second file", "", Required()},
                          {"--size", &size, "The size of raw files; photographs are resized to it", "WxH"},
                          {"--tolerance", &options.tolerance,
                           "The largest difference that counts as none (default: 0)", "N", Range{0, 1e9}},
                          {"--json", &options.json, "One JSON object in place of the table"}}};
  if (!parse_options(line, argc, argv)) return std::nullopt;
  if (size) options.size = parse_size_flag("--size", *size);
  return options;
}

struct Side {
  const std::string& path;
  Picture picture;
  std::vector<Plane> planes;
};

Side load(const std::string& path, const std::optional<FrameSize>& size) {
  Side side{path, opencv().read_picture(path, size, std::nullopt), {}};
  side.planes = planes_of(side.picture);
  return side;
}

std::string channels_of(const Side& side) {
  std::string names;
  for (const Plane& plane : side.planes) names += (names.empty() ? "" : ", ") + plane.name;
  return names;
}

/// A decoded picture always has three channels; where all are equal it can stand for one plane.
void drop_colour_of_grey(Side& side, const Side& other) {
  const std::vector<Plane>& planes = side.planes;
  if (other.planes.size() != 1 || layout_of_file(side.path) || planes[0].samples != planes[1].samples ||
      planes[1].samples != planes[2].samples)
    return;
  side.planes.resize(1);
  side.planes[0].name = other.planes[0].name;
}

void check_comparable(const Side& a, const Side& b) {
  if (channels_of(a) != channels_of(b))
    throw UsageError(a.path + " has the channels " + channels_of(a) + " but " + b.path + " " +
                     channels_of(b) + "; compare files of one kind.");
  if (a.picture.size != b.picture.size)
    throw UsageError(a.path + " has " + text_of(a.picture.size) + " pixels but " + b.path + " " +
                     text_of(b.picture.size) + "; compare pictures of one size.");
}

Json json_of(const PlaneDifference& plane) {
  // The library writes infinite numbers as null.
  Json json = {{"plane", plane.name}};
  if (plane.size.width > 0) {
    json["width"] = plane.size.width;
    json["height"] = plane.size.height;
    json["ssim"] = plane.ssim ? Json(*plane.ssim) : Json();
  }
  json["psnr"] = plane.psnr();
  json["maxDifference"] = plane.largest;
  json["differing"] = plane.differing;
  json["samples"] = plane.samples;
  return json;
}

void print_json(const Side& a, const Side& b, const std::vector<PlaneDifference>& planes, bool same) {
  Json list = Json::array();
  for (const PlaneDifference& plane : planes) list.push_back(json_of(plane));
  const PlaneDifference all = total(planes);
  const Json json = {{"a", a.path},
                     {"b", b.path},
                     {"width", a.picture.size.width},
                     {"height", a.picture.size.height},
                     {"identical", all.differing == 0},
                     {"withinTolerance", same},
                     {"planes", list},
                     {"all", json_of(all)}};
  std::puts(json.dump().c_str());
}

void print_line(const PlaneDifference& plane) {
  char ssim[32] = "-";
  if (plane.ssim) std::snprintf(ssim, sizeof ssim, "%.6f", *plane.ssim);
  std::printf("%-5s  %11s  %8.3f  %9s  %7g  %lld of %lld\n", plane.name.c_str(),
              plane.size.width > 0 ? text_of(plane.size).c_str() : "", plane.psnr(), ssim, plane.largest,
              static_cast<long long>(plane.differing), static_cast<long long>(plane.samples));
}

void print_table(const std::vector<PlaneDifference>& planes) {
  std::printf("%-5s  %11s  %8s  %9s  %7s  %s\n", "plane", "size", "PSNR dB", "SSIM", "largest", "differing");
  for (const PlaneDifference& plane : planes) print_line(plane);
  print_line(total(planes));
}

int compare(const CompareOptions& options) {
  Side a = load(options.a, options.size), b = load(options.b, options.size);
  drop_colour_of_grey(a, b);
  drop_colour_of_grey(b, a);
  check_comparable(a, b);
  std::vector<PlaneDifference> planes;
  for (size_t k = 0; k < a.planes.size(); ++k)
    planes.push_back(difference(a.planes[k], b.planes[k], a.picture.layout != Layout::kHsv));
  const bool same = total(planes).largest <= options.tolerance;
  if (options.json)
    print_json(a, b, planes, same);
  else
    print_table(planes);
  return same ? kExitSame : kExitDifferent;
}

}  // namespace

int compare_main(int argc, char** argv) {
  return comparison_status([&] {
    const std::optional<CompareOptions> options = parse_compare_options(argc, argv);
    return options ? compare(*options) : kExitSame;
  });
}

}  // namespace tool
