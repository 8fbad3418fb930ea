/// The completion scripts, made from what the subcommands' helps say.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "common/command_help.h"

namespace tool {

/// What a shell may put at one place of the command line. All empty: something that only the user knows.
struct Offer {
  std::vector<std::string> words;
  bool files = false, folders = false;
};

/// What follows a flag, or stands at a place of its own.
Offer offer_of(const ArgumentHelp& argument);

/// `text` between single quotes for a shell.
std::string shell_quoted(std::string_view text);

std::string bash_completion(const std::vector<CommandHelp>& commands);
std::string zsh_completion(const std::vector<CommandHelp>& commands);

}  // namespace tool
