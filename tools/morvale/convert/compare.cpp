/// `morvale compare`: how far two pictures are apart.
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>

#include "common/command.h"
#include "common/command_line.h"
#include "pictures/picture_file.h"
#include "pictures/plane_difference.h"

namespace tool {
namespace {

using nlohmann::ordered_json;

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
  std::string a, b, size_text;
  std::optional<FrameSize> size;
  double tolerance = 0;
  bool json = false;
};

std::optional<CompareOptions> parse_compare_options(int argc, char** argv) {
  CompareOptions options;
  CLI::App app(kIntroduction, "morvale compare");
  app.add_option("A", options.a, "The first file")->required()->type_name("");
  app.add_option("B", options.b, "The second file")->required()->type_name("");
  app.add_option("--size", options.size_text, "The size of raw files; photographs are resized to it")
      ->type_name("WxH");
  app.add_option("--tolerance", options.tolerance, "The largest difference that counts as none (default: 0)")
      ->type_name("N")
      ->check(within(0.0, 1e9));
  app.add_flag("--json", options.json, "One JSON object in place of the table");
  app.footer(kExamples);
  if (!parse_command_line(app, argc, argv)) return std::nullopt;
  if (app.count("--size") > 0) options.size = parse_size_flag("--size", options.size_text);
  return options;
}

struct Side {
  const std::string& path;
  Picture picture;
  std::vector<Plane> planes;
};

Side load(const std::string& path, const std::optional<FrameSize>& size) {
  Side side{path, read_picture(path, size), {}};
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

ordered_json json_of(const PlaneDifference& plane) {
  // The library writes infinite numbers as null.
  ordered_json json = {{"plane", plane.name}};
  if (plane.size.width > 0) {
    json["width"] = plane.size.width;
    json["height"] = plane.size.height;
    json["ssim"] = plane.ssim ? ordered_json(*plane.ssim) : ordered_json();
  }
  json["psnr"] = plane.psnr();
  json["maxDifference"] = plane.largest;
  json["differing"] = plane.differing;
  json["samples"] = plane.samples;
  return json;
}

void print_json(const Side& a, const Side& b, const std::vector<PlaneDifference>& planes, bool same) {
  ordered_json list = ordered_json::array();
  for (const PlaneDifference& plane : planes) list.push_back(json_of(plane));
  const PlaneDifference all = total(planes);
  const ordered_json json = {{"a", a.path},
                             {"b", b.path},
                             {"width", a.picture.size.width},
                             {"height", a.picture.size.height},
                             {"identical", all.differing == 0},
                             {"withinTolerance", same},
                             {"planes", list},
                             {"all", json_of(all)}};
  std::puts(json.dump(-1, ' ', false, ordered_json::error_handler_t::replace).c_str());
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
  const std::optional<CompareOptions> options = parse_compare_options(argc, argv);
  if (!options) return kExitSame;
  return comparison_status([&] { return compare(*options); });
}

}  // namespace tool
