#include "convert/convert_options.h"

#include <charconv>

#include "common/command.h"
#include "common/options.h"
#include "common/suggestion.h"

namespace tool {
namespace {

constexpr const char* kIntroduction =
    "Runs one image kernel of the library, by its name, over a file: morvale convert KERNEL [FLAGS] IN OUT.\n"
    "--list shows all kernels with what they take and give and the flags of each.\n";

constexpr const char* kExamples = R"(Examples:
  morvale convert --list
  morvale convert rotate_NV21 --mode 2 in_640x480.nv21 out_{size}.nv21
      A quarter turn counter-clockwise, written to out_480x640.nv21.
  morvale convert BGRtoNV21 photo.png 'photo_{size}.nv21'
  morvale convert NV21toBGR photo_512x512.nv21 again.png
      A photograph to a camera frame and back; morvale compare photo.png again.png shows the loss.
  morvale convert resize_NV21 --to 320x240 photo.jpg small.png
  morvale convert NV21toRGB_pad --right-margin 64 --bottom-margin 16 in_192x144.nv21 padded.png
  morvale convert resize_y_8x_up_RR_hori --region 10,20,32,16 plane_64x48.y wide.png
  morvale convert GaussianBlur_Grid_Hori --sigma 2.5 --grid cells.png plane_64x48.y 'soft_{size}.y'

Raw files are told by their endings: .nv21, .nv12, .rgb, .bgr, .bgrp (three planes, blue first), .y or
.gray, .hsv (three float32 a pixel). Rows are packed; NV21 has (height + 1) / 2 chroma rows. Their size
comes from the name, NAME_WxH.ENDING, or from --size. OUT gets exactly the picture; {size} in its name
becomes its size.

Any other IN is decoded as a photograph and brought to what the kernel takes: grey by BGR2GRAY, NV21 and
NV12 by BGRtoNV21 after an odd last column or row is dropped. OUT with the ending of an image format (.png,
.jpg, ...) is encoded from what the kernel gives; NV21 goes through NV21toRGB, and HSV has no image format.

Enlarging to any size reads on past the end of a row and of the picture. It finds the next row there, and
behind the picture the last row once more. The padded converters rewrite the picture's last columns unless
width and margin reach a multiple of 8 at or behind the width, as the library's header says. What a kernel
leaves unwritten is 128 in chroma, 0 elsewhere. A grid file is a picture with one pixel for each cell of 8 x
8 pixels, or raw bytes, 600 for each row of cells; anything but 0 marks.

Exit status: 0 done, 1 the result cannot be written, 2 the command line or a file cannot be used.
)";

/// What the options say, before it is looked at closer.
struct Texts {
  std::string kernel;
  std::optional<std::string> size, to, region;
};

/// "X,Y,W,H".
Region parse_region(const std::string& text) {
  int numbers[4] = {};
  const char* at = text.data();
  const char* const end = at + text.size();
  for (int k = 0; k < 4; ++k) {
    const auto [next, error] = std::from_chars(at, end, numbers[k]);
    const bool separated = k == 3 ? next == end : next != end && *next == ',';
    if (error != std::errc() || !separated || numbers[k] < (k < 2 ? 0 : 1))
      throw UsageError("--region: '" + text + "' is not a region; write it as X,Y,W,H.");
    at = next + 1;
  }
  return {numbers[0], numbers[1], numbers[2], numbers[3]};
}

Option kernel_flag(std::string_view name, OptionTarget target, OptionRule rule = {}) {
  for (const FlagInfo& info : kernel_flags())
    if (info.name == name) return {info.name, target, info.help, info.value, rule};
  throw std::logic_error("a flag is missing in the table");
}

CommandLine command_line(ConvertOptions& options, Texts& texts) {
  constexpr int kFar = 1 << 20;
  constexpr Range kMargin{-kFar, kFar}, kLength{1, kFar};
  KernelFlags& flags = options.flags;
  kernel_list::Arguments& arguments = flags.arguments;
  return {"morvale convert",
          kIntroduction,
          kExamples,
          {{"KERNEL", &texts.kernel, "The kernel's name"},
           {"IN", &options.in, "A raw file or a photograph"},
           {"OUT", &options.out, "A raw file or one of an image format"},
           {"--list", &options.list, "Show the kernels, nothing else"},
           {"--json", &options.json, "With --list: as JSON"},
           {"--size", &texts.size, "A raw file's size; photographs are resized to it", "WxH"},
           kernel_flag("--mode", &arguments.mode),
           kernel_flag("--factor", &arguments.factor, Range{1, 64}),
           kernel_flag("--to", &texts.to),
           kernel_flag("--right-margin", &arguments.right_margin, kMargin),
           kernel_flag("--bottom-margin", &arguments.bottom_margin, kMargin),
           kernel_flag("--out-width", &arguments.out_width, kLength),
           kernel_flag("--out-height", &arguments.out_height, kLength),
           kernel_flag("--region", &texts.region),
           kernel_flag("--sigma", &flags.sigma, Range{0, 1000}),
           kernel_flag("--radius", &flags.radius, Range{0, 127}),
           kernel_flag("--bits", &arguments.blur.bits),
           kernel_flag("--grid", &flags.grid)}};
}

std::string hint(const std::string& name) {
  std::vector<std::string> names;
  for (const Kernel& kernel : kernel_list::kKernels) names.emplace_back(kernel.name);
  const std::string meant = did_you_mean(name, names);
  return meant.empty() ? ";" : meant;
}

const Kernel& kernel_named(const std::string& name) {
  const Kernel* kernel = kernel_list::find(name);
  if (kernel == nullptr)
    throw UsageError("there is no kernel '" + name + "'" + hint(name) +
                     " morvale convert --list names them.");
  return *kernel;
}

void check_flags(const std::set<std::string>& all_given, const Kernel& kernel) {
  for (const FlagInfo& info : kernel_flags()) {
    const bool given = all_given.contains(info.name);
    const bool taken = info.group == kernel.group;
    if (given && !taken)
      throw UsageError(std::string(kernel.name) + " takes no " + info.name +
                       "; morvale convert --list shows its flags.");
    if (!given && taken && info.required)
      throw UsageError(std::string(kernel.name) + " needs " + info.name + " " + info.value +
                       "; morvale convert --list explains it.");
  }
}

}  // namespace

std::optional<ConvertOptions> parse_convert_options(int argc, char** argv) {
  ConvertOptions options;
  Texts texts;
  const auto given = parse_options(command_line(options, texts), argc, argv);
  if (!given) return std::nullopt;
  if (options.list) {
    if (!texts.kernel.empty()) throw UsageError("--list stands alone; give it or a kernel.");
    return options;
  }
  if (options.json) throw UsageError("--json goes with --list; add it.");
  if (texts.kernel.empty()) throw UsageError("KERNEL is missing; morvale convert --list names them.");
  options.kernel = &kernel_named(texts.kernel);
  if (options.in.empty() || options.out.empty())
    throw UsageError("IN and OUT are needed behind the kernel's name; see morvale convert --help.");
  check_flags(*given, *options.kernel);
  if (texts.size) options.size = parse_size_flag("--size", *texts.size);
  kernel_list::Arguments& arguments = options.flags.arguments;
  if (texts.to) {
    const FrameSize to = parse_size_flag("--to", *texts.to);
    arguments.out_width = to.width, arguments.out_height = to.height;
  }
  if (texts.region) arguments.region = parse_region(*texts.region);
  return options;
}

}  // namespace tool
