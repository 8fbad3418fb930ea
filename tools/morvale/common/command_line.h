#pragma once

#include <string>

namespace tool {

/// The command line as a shell takes it again: words that it would change stand in single quotes.
std::string command_text(int argc, char** argv);

/// Prints all of `text`, or throws RunError: half of it, kept as a file, would pass for the whole.
void print_text(const std::string& text);

/// Throws RunError when what was printed so far did not all arrive.
void flush_output();

}  // namespace tool
