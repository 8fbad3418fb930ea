/// What the subcommands' helps say, taken apart.
#pragma once

#include <string>
#include <vector>

namespace tool {

/// A flag, or an argument that is told by its place.
struct ArgumentHelp {
  std::vector<std::string> flags;  ///< "-h", "--help"; none: told by its place
  std::string name;                ///< of an argument that is told by its place
  std::string value;  ///< as the help writes it, "WxH" or "front|back"; empty: nothing, or untold
  std::string text;
  bool required = false;
  bool repeated = false;  ///< takes several values, or counts
};

struct CommandHelp {
  std::string name, summary;
  std::string usage;         ///< "morvale score [OPTIONS] BUNDLE..."
  std::string introduction;  ///< laid out for a terminal, as the help shows it
  std::string notes;         ///< likewise: what follows the flags
  std::vector<ArgumentHelp> places, flags;
};

/// Every subcommand, in the order of `morvale --help`.
std::vector<CommandHelp> all_command_helps();

}  // namespace tool
