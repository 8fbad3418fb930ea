/// `morvale pack`: a recording as one small file.
#include <cstdio>
#include <filesystem>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/command.h"
#include "common/interrupt.h"
#include "common/options.h"
#include "common/progress.h"
#include "common/words.h"
#include "pictures/opencv_module.h"
#include "record/thin_frame.h"
#include "service/camera_service.h"
#include "session/frame_files.h"
#include "session/parts.h"
#include "session/printable.h"

namespace tool {
namespace {

namespace fs = std::filesystem;
using morvale::session::BundleError;
using morvale::session::BundleReader;
using morvale::session::BundleWriter;
using morvale::session::FrameInput;
using Bytes = std::vector<uint8_t>;

constexpr const char* kIntroduction =
    "Makes one small file of a recording: of each frame it keeps the bytes that the library reads, "
    "compressed.\n"
    "It replays bit for bit; every command that reads recordings takes it.\n";

constexpr const char* kExamples = R"(Examples:
  morvale pack session-0001 session-0001.morvale
  morvale pack --preview session-0001 session-0001.morvale
      With a small JPEG of each frame: tar -xf session-0001.morvale previews
  morvale pack --whole session-0001 session-0001.morvale
      Every byte of every frame, compressed.
  tar -xf session-0001.morvale -C somewhere
      A packed recording is a tar of the recording's files.

A frame that the library drew into (a debug level above 0) is kept whole. What a folder holds beside the recording,
as the truth of a made-up scene, is left behind.

Exit status: 0 done, 1 FILE cannot be written, 2 the command line or RECORDING cannot be used, 130 stopped by Ctrl-C.
)";

struct PackOptions {
  std::string from, to;
  bool preview = false, whole = false;
};

std::optional<PackOptions> parse_pack_options(int argc, char** argv) {
  PackOptions options;
  const CommandLine line{
      "morvale pack",
      kIntroduction,
      kExamples,
      {{"RECORDING", &options.from, "A session bundle or a packed recording", "", Required()},
       {"FILE", &options.to, "The new file; its name ends in .morvale", "", Required()},
       {"--preview", &options.preview, "Add a small JPEG of each frame"},
       {"--whole", &options.whole, "Keep every byte of the frames"}}};
  if (!parse_options(line, argc, argv)) return std::nullopt;
  if (fs::path(options.to).extension() != morvale::session::kPackedExtension)
    throw UsageError(options.to + ": the name of a packed recording ends in " +
                     morvale::session::kPackedExtension + "; name it so.");
  return options;
}

Bytes preview_of(const FrameInput& input) {
  if (input.nv21.empty() || !input.has_planes) return {};
  Geometry geometry;
  geometry.width = input.record.width;
  geometry.height = input.record.height;
  geometry.stride = static_cast<int>(chroma_offset(input) / geometry.height);
  Bytes pixels = input.nv21;
  // The conversion looks for chroma behind an odd last row or column, where there is none.
  pixels.resize(pixels.size() + static_cast<size_t>(geometry.width) + 2, 128);
  constexpr size_t kRoom = 16 << 10;
  return opencv().frame_jpeg(pixels, geometry, kRoom);
}

void thin_out(FrameInput& input, int32_t pad_size) {
  if (input.nv21.empty()) return;
  input.thin = morvale::record::thin_frame(input, pad_size);
  if (input.thin) input.nv21.clear();
}

/// Runs a step that writes: what it cannot write is no fault of the recording.
template <class Step>
void writing(Step step) {
  try {
    step();
  } catch (const BundleError& error) {
    throw RunError(std::string(error.what()) + ".");
  }
}

/// False when it was asked to stop.
bool copy_frames(const BundleReader& from, BundleWriter& to, const PackOptions& options) {
  const bool thin = !options.whole && from.info().debug_level < 1;
  Progress progress(static_cast<size_t>(from.frame_count()));
  for (int index = 0; index < from.frame_count(); ++index) {
    if (Interrupt::asked() != 0) return false;
    progress.next(options.from);
    FrameInput input = from.input(index);
    const Bytes preview = options.preview ? preview_of(input) : Bytes();
    if (thin || from.is_thin(index)) thin_out(input, from.info().pad_size);
    const morvale::session::FrameOutput output = from.output(index);
    writing([&] { to.add(input, output, preview); });
  }
  return true;
}

/// Level 9 of Zstandard; beyond it the file hardly shrinks.
constexpr int kCompression = 9;

}  // namespace

int pack_main(int argc, char** argv) {
  const std::optional<PackOptions> options = parse_pack_options(argc, argv);
  if (!options) return kExitDone;
  try {
    const Interrupt leave_nothing_half_made;
    const BundleReader from(options->from);
    if (!from.warning().empty()) complain(from.warning() + ".");
    BundleWriter to(options->to, from.info(), kCompression);
    if (!copy_frames(from, to, *options)) {
      complain(options->to + ": stopped; nothing of it is left.");
      return kExitInterrupted;
    }
    writing([&] { to.finish(); });
    std::printf("%s: %s, %ju bytes\n", morvale::session::printable(options->to).c_str(),
                counted(static_cast<size_t>(from.frame_count()), "frame").c_str(),
                static_cast<uintmax_t>(fs::file_size(options->to)));
  } catch (const BundleError& error) {
    throw UsageError(std::string(error.what()) + ".");
  }
  return kExitDone;
}

}  // namespace tool
