#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <set>
#include <string>

namespace tool {

struct Command;

/// Parses a subcommand's arguments. False when the help was asked for and printed; throws UsageError.
bool parse_command_line(CLI::App& app, int argc, char** argv);

/// Checks of an option's value. The allowed values stand in the option's own texts; CLI11's lists of them
/// would stand there twice.
inline CLI::Validator one_of(const std::set<std::string>& values) {
  return CLI::IsMember(values).description("");
}
template <class Number>
CLI::Validator within(Number least, Number most) {
  return CLI::Range(least, most).description("");
}

/// Asks a subcommand for its help, as --help does, and shows `read` what it would print it from. So whoever
/// tells of a subcommand elsewhere takes every word from where the subcommand takes it.
void read_command_line(const Command& command, const std::function<void(const CLI::App&)>& read);

/// The command line as a shell takes it again: words that it would change stand in single quotes.
std::string command_text(int argc, char** argv);

/// Prints all of `text`, or throws RunError: half of it, kept as a file, would pass for the whole.
void print_text(const std::string& text);

}  // namespace tool
