#pragma once

#include <CLI/CLI.hpp>

namespace tool {

/// Parses a subcommand's arguments. False when the help was asked for and printed; throws UsageError.
bool parse_command_line(CLI::App& app, int argc, char** argv);

}  // namespace tool
