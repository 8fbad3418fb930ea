/// `morvale inspect`: a recording or its records in words.
#include <algorithm>
#include <cstdio>
#include <optional>
#include <string>

#include "common/command.h"
#include "common/options.h"
#include "common/words.h"
#include "inspect/inspect_source.h"
#include "inspect/inspect_summary.h"
#include "inspect/inspect_words.h"
#include "service/report_text.h"
#include "session/printable.h"

namespace tool {
namespace {

using morvale::session::FrameLine;
using morvale::session::Json;

constexpr const char* kIntroduction =
    "Says in words what a recording or a file of result records holds: a summary of all frames, then the\n"
    "record of one frame.\n";

constexpr const char* kExamples = R"(Examples:
  morvale inspect session-0001
      What the session bundle holds, then the record of its first frame.
  morvale inspect session-0001 --frame 41 --offsets
      Every word of frame 41's record with its offset, name, value and meaning.
  morvale inspect --camera back session-0001/records.bin --all
      Bare records do not say whose they are: without --camera they are read as the front camera's.
  morvale inspect --verify session-0001
      Whether every byte is as it was recorded, and which frames are damaged.
  tail -c 288 session-0001/records.bin | morvale inspect - --hex
      A single record.
  morvale inspect --format json session-0001 | jq .session.networkMs

A colour figure is its mean with the low and the high band in brackets. In the grid, # is a cell where
somebody is. The network's times are there when the recording has them; p90 is what nine runs of ten did not
exceed.

Exit status: 0 done, 1 the output cannot be written or --verify found damage, 2 the command line or PATH cannot be used.
)";

struct InspectOptions {
  std::string path;
  int frame = 0;
  bool all = false, offsets = false, hex = false, verify = false, json = false;
  Camera camera = Camera::kFront;
};

std::optional<InspectOptions> parse_inspect_options(int argc, char** argv) {
  InspectOptions options;
  std::string camera = "front", format = "text";
  const CommandLine line{
      "morvale inspect",
      kIntroduction,
      kExamples,
      {{"PATH", &options.path, "A session bundle, a file of 288-byte records, or - for standard input", "",
        Required()},
       {"--frame", &options.frame, "Whose record is told (default: 0)", "N", Range{0, 1 << 30}},
       {"--all", &options.all, "Every frame's record", "", Excludes{"--frame"}},
       {"--offsets", &options.offsets, "The record word by word: offset, name, value, meaning"},
       {"--hex", &options.hex, "The record's 288 bytes"},
       {"--verify", &options.verify, "Whether the recording is as it was made, in place of all else", "",
        Excludes{"--frame"}},
       {"--camera", &camera, "Whose bare records are (default: front); a bundle says it itself",
        "front|back"},
       {"--format", &format, "Text (default) or one JSON object", "text|json"}}};
  if (!parse_options(line, argc, argv)) return std::nullopt;
  options.camera = camera == "front" ? Camera::kFront : Camera::kBack;
  options.json = format == "json";
  return options;
}

/// What the bundle tells of the frame beside its record.
std::string frame_text(const FrameLine& line) {
  const MorvaleData_t& record = line.input.record;
  const int faces = std::clamp(record.faceCount, 0, morvale::kMaxFaces);
  std::string text = ", " + std::to_string(record.width) + "x" + std::to_string(record.height) + ", " +
                     std::to_string(faces) + " camera " + (faces == 1 ? "face" : "faces");
  if (is_gated(line)) text += ", gated";
  if (line.process_result != 0) text += ", failed";
  return text;
}

void print_record(const RecordSource& source, int index, const InspectOptions& options) {
  const PersonWholeMeta& record = source.records[static_cast<size_t>(index)];
  const Camera camera = source.camera_at(index, options.camera);
  std::string text = "\nframe " + std::to_string(index);
  text += camera == Camera::kFront ? ", front camera" : ", back camera";
  if (source.bundle) text += frame_text(source.lines[static_cast<size_t>(index)]);
  text += "\n" + record_words(record, camera);
  if (options.offsets) text += "\n" + word_table(record, camera);
  if (options.hex) text += "\n" + hex_dump(record);
  std::fputs(text.c_str(), stdout);
}

Json frame_json(const RecordSource& source, int index, const InspectOptions& options) {
  const PersonWholeMeta& record = source.records[static_cast<size_t>(index)];
  const Camera camera = source.camera_at(index, options.camera);
  Json json = {{"frame", index}, {"camera", camera == Camera::kFront ? "front" : "back"}};
  if (source.bundle) {
    const FrameLine& line = source.lines[static_cast<size_t>(index)];
    json["width"] = line.input.record.width;
    json["height"] = line.input.record.height;
    json["process"] = line.process_result;
  }
  json["record"] = record_json(record, camera);
  if (options.offsets) json["words"] = words_json(record, camera);
  if (options.hex) json["hex"] = hex_digits(record);
  return json;
}

/// A line for each damaged frame, and one for the whole.
int verify_all(const morvale::session::BundleReader& bundle, const std::string& name) {
  using morvale::session::printable;
  int damaged = 0, unhashed = 0;
  for (int frame = 0; frame < bundle.frame_count(); ++frame) {
    unhashed += bundle.line(frame).hashes.record.empty();
    const std::optional<std::string> damage = bundle.damage(frame);
    if (!damage) continue;
    ++damaged;
    std::puts(printable(*damage).c_str());
  }
  std::string text = name + ": " + counted(static_cast<size_t>(bundle.frame_count()), "frame") + ", " +
                     (damaged == 0 ? "all as recorded" : std::to_string(damaged) + " damaged");
  if (unhashed > 0)
    text +=
        "; " + std::to_string(unhashed) + " of an older version have no hashes: their sizes were looked at";
  if (!bundle.warning().empty()) text += "; " + bundle.warning();
  std::puts((printable(text) + ".").c_str());
  return damaged == 0 ? kExitDone : kExitFailed;
}

int verify(const std::string& path) {
  try {
    return verify_all(morvale::session::BundleReader(path, morvale::session::Damage::kTell), path);
  } catch (const morvale::session::BundleError& error) {
    throw UsageError(std::string(error.what()) + ".");
  }
}

}  // namespace

int inspect_main(int argc, char** argv) {
  const std::optional<InspectOptions> options = parse_inspect_options(argc, argv);
  if (!options) return kExitDone;
  if (options->verify) return verify(options->path);
  const RecordSource source = open_records(options->path);
  // A bundle that ended before its first frame has a summary and no record.
  const bool nothing_asked = options->frame == 0 && source.frame_count() == 0;
  if (options->frame >= source.frame_count() && !nothing_asked)
    throw UsageError(source.name + " has no frame " + std::to_string(options->frame) + "; it holds " +
                     std::to_string(source.frame_count()) + " frames, counted from 0.");
  const int first = options->all ? 0 : options->frame;
  const int end = options->all ? source.frame_count() : std::min(options->frame + 1, source.frame_count());
  const Camera camera = source.camera().value_or(options->camera);
  if (!options->json) {
    std::fputs(summary_text(source, camera).c_str(), stdout);
    for (int index = first; index < end; ++index) print_record(source, index, *options);
    return kExitDone;
  }
  Json json = summary_json(source, camera);
  json["records"] = Json::array();
  for (int index = first; index < end; ++index)
    json["records"].push_back(frame_json(source, index, *options));
  std::fputs(text_line(json).c_str(), stdout);
  return kExitDone;
}

}  // namespace tool
