/// `morvale manual`: the manual page, made from what the subcommands' helps say.
#include <algorithm>
#include <string>
#include <utility>

#include "common/command.h"
#include "common/command_help.h"
#include "common/command_line.h"
#include "common/options.h"
#include "manual/manual_layout.h"
#include "manual/roff.h"

namespace tool {
namespace {

constexpr const char* kIntroduction =
    "Prints the manual page morvale(1), which is made from the helps of all commands.\n";

constexpr const char* kExamples = R"(Examples:
  morvale manual | man -l -
      Reads it.
  morvale manual > ~/.local/share/man/man1/morvale.1
      Puts it where man morvale finds it; an installed morvale brings it.
)";

constexpr const char* kDescription =
    "Morvale Capture is a shared library that looks for people in every frame of a camera: a network "
    "labels the frame's pixels, and the library makes a record of 288 bytes of them, with the share "
    "of people in the picture and the measured faces or persons. This program drives the library as a "
    "camera service does.";

struct Variable {
  const char* name;
  const char* text;
};

constexpr Variable kEnvironment[] = {
    {"VEXA_MODEL_DIR",
     "The folder of the network's model files. --model-dir goes before it; without both it is "
     "~/.cache/morvale/network."},
    {"XDG_CACHE_HOME", "Stands for ~/.cache in the above."},
    {"VEXA_ENGINE",
     "What answers in place of a device's neural runtime: onnx (the default) runs the models; fixed "
     "answers at once, always the same, without a model; recorded answers what VEXA_BUNDLE holds. "
     "Commands that need one of them choose it themselves."},
    {"VEXA_BUNDLE", "The session bundle, a folder, that VEXA_ENGINE=recorded answers from."},
    {"VEXA_BUNDLE_FRAME",
     "The frame of the bundle to answer for, read before every run. Unset: the next one that has an "
     "answer."},
    {"VEXA_RECORD_DIR",
     "With libvexa_record.so loaded ahead of the library (LD_PRELOAD): the folder that gets a session "
     "bundle for each session."},
    {"VEXA_RECORD_FRAMES", "0 leaves the pixels out of the recording."},
    {"VEXA_RECORD_LABELS", "1 keeps the label maps in the recording."},
    {"MORVALE_KERNELS",
     "The set of image kernels: portable, avx2, avx512 or neon. Unset: the fastest that the processor "
     "runs. All give the same bytes."},
    {"MORVALE_LOG",
     "The lowest priority of the library's messages that standard error shows: V, D, I, W, E, F, or S "
     "for none. Unset, commands show none unless --verbose asks for them."},
    {"PERSIST_MORVALE_CAPTURE_DEBUG",
     "The property persist.morvale.capture.debug, the library's debug level: 1 or 2 log every frame "
     "and paint the label scores into the front camera's luma."},
};

std::string bold(std::string_view text) { return "\\fB" + roff_text(text) + "\\fR"; }
std::string italic(std::string_view text) { return "\\fI" + roff_text(text) + "\\fR"; }

/// "--camera front|back", "-h, --help", "INPUT..."
std::string argument_tag(const ArgumentHelp& argument) {
  std::string tag = argument.name.empty() ? "" : italic(argument.name);
  for (const std::string& flag : argument.flags) tag += (tag.empty() ? "" : ", ") + bold(flag);
  if (!argument.value.empty()) tag += " " + italic(argument.value);
  if (argument.repeated) tag += "...";
  return tag;
}

/// The usage line tells which of the arguments without a flag are required.
std::string argument_text(const ArgumentHelp& argument) {
  return roff_text(argument.text + (argument.required && argument.name.empty() ? " (required)" : ""));
}

void write_parts(Roff& roff, const std::vector<ManualPart>& parts) {
  for (const ManualPart& part : parts) {
    switch (part.kind) {
      case ManualPart::Kind::kParagraph:
        roff.paragraph(part.text);
        break;
      case ManualPart::Kind::kCode:
        roff.code(part.text, part.after_gap);
        break;
      case ManualPart::Kind::kTerm:
        roff.item(bold(part.term), roff_text(part.text));
        break;
      case ManualPart::Kind::kExplanation:
        roff.explanation(part.text);
        break;
    }
  }
}

void write_arguments(Roff& roff, const CommandHelp& command) {
  roff.subsection("Options");
  for (const auto* arguments : {&command.places, &command.flags})
    for (const ArgumentHelp& argument : *arguments)
      roff.item(argument_tag(argument), argument_text(argument));
}

bool is_examples(const ManualPart& part) { return part.text == "Examples:"; }

/// What a paragraph is about, where it says so in front; empty: goes on with what is above.
std::string title_of(const ManualPart& part) {
  if (part.kind != ManualPart::Kind::kParagraph) return {};
  if (is_examples(part)) return "Examples";
  return part.text.rfind("Exit status: ", 0) == 0 ? "Exit status" : "Notes";
}

void write_notes(Roff& roff, std::vector<ManualPart> parts) {
  std::string shown;
  for (ManualPart& part : parts) {
    const std::string title = title_of(part);
    if (!title.empty() && title != shown) roff.subsection(shown = title);
    if (title == "Examples") continue;
    if (title == "Exit status") part.text.erase(0, title.size() + 2);
    write_parts(roff, {part});
  }
}

void write_command(Roff& roff, const CommandHelp& command) {
  // A help may go on with its introduction behind the flags, up to the examples.
  std::vector<ManualPart> notes = manual_parts(command.notes), more;
  const auto examples = std::find_if(notes.begin(), notes.end(), is_examples);
  if (examples != notes.end()) {
    more.assign(notes.begin(), examples);
    notes.erase(notes.begin(), examples);
  }
  roff.section("morvale " + command.name);
  roff.synopsis({command.usage});
  write_parts(roff, manual_parts(command.introduction));
  write_parts(roff, more);
  write_arguments(roff, command);
  write_notes(roff, std::move(notes));
}

void write_head(Roff& roff, const std::vector<CommandHelp>& commands) {
  roff.section("NAME");
  roff.text(roff_text("morvale - ") + roff_text(kProgramSummary));
  roff.section("SYNOPSIS");
  roff.synopsis(
      {"morvale COMMAND [OPTIONS]", "morvale COMMAND --help", "morvale --help", "morvale --version"});
  roff.section("DESCRIPTION");
  roff.paragraph(kDescription);
  roff.section("COMMANDS");
  for (const CommandHelp& command : commands) roff.item(bold(command.name), roff_text(command.summary));
}

void write_tail(Roff& roff) {
  roff.section("ENVIRONMENT");
  for (const Variable& variable : kEnvironment) roff.item(bold(variable.name), roff_text(variable.text));
  roff.section("EXIT STATUS");
  for (const ExitMeaning& meaning : kExitMeanings)
    roff.item(bold(std::to_string(meaning.status)), roff_text(meaning.text));
  roff.section("SEE ALSO");
  roff.text("\\fBffmpeg\\fR(1), \\fBparallel\\fR(1)");
  roff.paragraph(
      "In the project's folder docs: frame-contract.md (records, rules and messages), replay.md, "
      "at-scale.md, "
      "session-bundle.md (recordings), scenes.md, network.md and performance.md.");
}

}  // namespace

int manual_main(int argc, char** argv) {
  if (!parse_options({"morvale manual", kIntroduction, kExamples, {}}, argc, argv)) return kExitDone;
  const std::vector<CommandHelp> commands = all_command_helps();
  Roff roff("MORVALE", "Morvale Capture " MORVALE_VERSION, "User Commands");
  write_head(roff, commands);
  for (const CommandHelp& command : commands) write_command(roff, command);
  write_tail(roff);
  print_text(roff.page());
  return kExitDone;
}

}  // namespace tool
