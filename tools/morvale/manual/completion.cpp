/// `morvale completion`: what a shell needs to complete morvale's command lines.
#include "manual/completion.h"

#include <set>

#include "common/command.h"
#include "common/command_line.h"
#include "common/options.h"
#include "kernel_list/kernel_list.h"

namespace tool {
namespace {

constexpr const char* kIntroduction =
    "Prints a script that lets a shell complete commands, flags, their values and file names.\n";

constexpr const char* kExamples = R"(Examples:
  source <(morvale completion bash)
      In this shell only. In zsh the same with zsh, after compinit.
  morvale completion bash > ~/.local/share/bash-completion/completions/morvale
      In every new bash that has bash-completion.
  morvale completion zsh > ~/.zsh/functions/_morvale
      In every new zsh whose fpath has that folder before compinit.

An installed morvale brings both scripts; nothing needs to be done for it.
)";

}  // namespace

Offer offer_of(const ArgumentHelp& argument) {
  static const std::set<std::string> files = {"FILE", "PATH", "VIDEO", "PHOTO", "PICTURE", "RECORDS"};
  static const std::set<std::string> folders = {"DIR", "FOLDER", "BUNDLE"};
  Offer offer;
  for (const std::string& part : alternatives(argument.value)) {
    if (is_word(part)) offer.words.push_back(part);
    offer.files |= files.contains(part);
    offer.folders |= folders.contains(part);
  }
  if (argument.name == "KERNEL")
    for (const kernel_list::Kernel& kernel : kernel_list::kKernels) offer.words.emplace_back(kernel.name);
  // All other arguments without a flag are files, or folders among them.
  if (argument.flags.empty() && offer.words.empty()) offer.files = true;
  return offer;
}

std::string shell_quoted(std::string_view text) {
  std::string quoted = "'";
  for (const char c : text) quoted += c == '\'' ? "'\\''" : std::string(1, c);
  return quoted + "'";
}

int completion_main(int argc, char** argv) {
  std::string shell;
  const CommandLine line{"morvale completion",
                         kIntroduction,
                         kExamples,
                         {{"SHELL", &shell, "The shell", "bash|zsh", Required()}}};
  if (!parse_options(line, argc, argv)) return kExitDone;
  const std::vector<CommandHelp> commands = all_command_helps();
  print_text(shell == "bash" ? bash_completion(commands) : zsh_completion(commands));
  return kExitDone;
}

}  // namespace tool
