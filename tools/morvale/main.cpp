/// The program `morvale`: finds the subcommand and runs it.
#include <csignal>
#include <cstdio>
#include <exception>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "common/command.h"
#include "common/command_line.h"
#include "common/suggestion.h"
#include "session/build_note.h"

namespace {

using tool::Command;

constexpr Command kCommands[] = {
    {"analyze", "analyse photographs or raw camera frames and print the result records", tool::analyze_main},
    {"replay", "send recordings, videos or pictures through one session, and show what the library saw",
     tool::replay_main},
    {"convert", "run one image kernel, by its name, over a raw file or a photograph", tool::convert_main},
    {"compare", "measure how far two pictures are apart: PSNR, SSIM, largest difference", tool::compare_main},
    {"scene", "make a scene up, as a session bundle with the truth beside it", tool::scene_main},
    {"score", "compare what the library finds in made-up scenes with the truth", tool::score_main},
    {"bench", "time the library's stages over many frames, without the network", tool::bench_main},
    {"diff", "compare two recordings' records: the first frame and field that differ", tool::diff_main},
    {"inspect", "say in words what a recording or its records hold", tool::inspect_main},
    {"ab", "compare two builds of the library over many recordings", tool::ab_main},
    {"pack", "make one small file of a recording, which replays bit for bit", tool::pack_main},
    {"selfcheck", "check that the library computes here what it computes everywhere", tool::selfcheck_main},
    {"doctor", "print what a bug report needs, and check that the library works here", tool::doctor_main},
    {"completion", "print the completion script of a shell", tool::completion_main},
    {"manual", "print the manual page", tool::manual_main},
};

std::string exit_status() {
  std::string text;
  for (const tool::ExitMeaning& meaning : tool::kExitMeanings)
    text += (text.empty() ? "" : ", ") + std::to_string(meaning.status) + " " + meaning.text;
  return text;
}

void print_help() {
  std::printf("morvale: %s\n\nUsage: morvale COMMAND [OPTIONS]\n\nCommands:\n", tool::kProgramSummary);
  for (const Command& command : kCommands) std::printf("  %-10s %s\n", command.name.data(), command.summary);
  std::printf(
      "\nmorvale COMMAND --help explains a command with examples; morvale --version prints the version.\n"
      "man morvale has all of it in one page.\n"
      "Exit status: %s.\n",
      exit_status().c_str());
}

void print_version() {
  std::printf("morvale " MORVALE_VERSION "\nlibrary %s\n", morvale::session::library_identity().c_str());
}

int usage_error(const std::string& sentence) {
  tool::complain(sentence);
  return tool::kExitUsage;
}

int run(int argc, char** argv) {
  const std::string_view name = argv[1];
  if (name == "--help" || name == "-h" || name == "help") return print_help(), tool::kExitDone;
  if (name == "--version") return print_version(), tool::kExitDone;
  std::vector<std::string> names{"--help", "--version"};
  for (const Command& command : kCommands) {
    if (command.name == name) return command.run(argc - 1, argv + 1);
    names.emplace_back(command.name);
  }
  const std::string hint = tool::did_you_mean(name, names);
  throw tool::UsageError("there is no command '" + std::string(name) + "'" + (hint.empty() ? ";" : hint) +
                         " morvale --help lists them.");
}

/// Runs the command, and says in one sentence what stopped it.
int run_to_end(int argc, char** argv) {
  try {
    const int status = run(argc, argv);
    tool::flush_output();
    return status;
  } catch (const tool::UsageError& error) {
    return usage_error(error.what());
  } catch (const std::exception& error) {
    tool::complain(error.what());
    return tool::kExitFailed;
  }
}

}  // namespace

std::span<const Command> tool::commands() { return kCommands; }

int main(int argc, char** argv) {
  // A file-size limit is then as a full disk: the file in hand goes, and a sentence is said.
  std::signal(SIGXFSZ, SIG_IGN);
  if (argc < 2) return usage_error("a command is missing; morvale --help lists them.");
  return run_to_end(argc, argv);
}
