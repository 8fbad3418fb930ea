/// A subcommand's options as data. options.cpp alone includes the library that reads command lines, which
/// costs each file that does ten seconds of compilation.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <variant>
#include <vector>

namespace tool {

struct Command;

/// Where an option's value goes. A bool is a flag without a value; an optional stays empty when the option is
/// not given; a list takes every value.
using OptionTarget =
    std::variant<bool*, int*, uint64_t*, float*, double*, std::string*, std::optional<int>*,
                 std::optional<float>*, std::optional<std::string>*, std::vector<std::string>*>;

/// What else must hold of an option.
struct Unruled {};
struct Required {};
struct Range {
  double least, most;
};
struct Excludes {
  const char* other;
};
using OptionRule = std::variant<Unruled, Required, Range, Excludes>;

struct Option {
  std::string name;  ///< "--size"; an argument that is told by its place has no dashes: "INPUT"
  OptionTarget target;
  std::string help;
  /// What follows the name, as the help writes it. Of alternatives in lower case, "front|back", nothing else
  /// is taken; "WxH" and "FILE|auto" tell people (and shells) alone.
  std::string value = {};
  OptionRule rule = {};
};

struct CommandLine {
  std::string name;  ///< "morvale analyze"
  const char* introduction;
  const char* notes;  ///< what follows the options in the help
  std::vector<Option> options;
};

/// Reads the arguments into the options' targets. Returns the names of the options that were given, or
/// nothing when the help was asked for and printed; throws UsageError.
std::optional<std::set<std::string>> parse_options(const CommandLine& line, int argc, char** argv);

/// "front|back" as its parts.
std::vector<std::string> alternatives(const std::string& value);

/// Whether an alternative is typed as it is: that is in lower case. Capitals stand for something.
bool is_word(const std::string& alternative);

/// What a subcommand's --help would print, taken apart.
struct SubcommandHelp {
  CommandLine line;   ///< its targets are gone
  std::string usage;  ///< "morvale score [OPTIONS] BUNDLE..."
};
/// Asks the subcommand for its help as --help does. So whoever tells of a subcommand elsewhere takes every
/// word from where the subcommand takes it.
SubcommandHelp subcommand_help(const Command& command);

}  // namespace tool
