#include "common/command_line.h"

#include <cstdio>
#include <string>

#include "common/command.h"

namespace tool {

void print_text(const std::string& text) {
  std::fputs(text.c_str(), stdout);
  flush_output();
}

void flush_output() {
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0)
    throw RunError("standard output cannot be written.");
}

std::string command_text(int argc, char** argv) {
  std::string line = "morvale";
  for (int i = 0; i < argc; ++i) {
    const std::string word = argv[i];
    const bool plain =
        !word.empty() && word.find_first_of(" \t\n'\"\\$&|;<>()*?[]{}~#!`") == std::string::npos;
    std::string quoted = "'";
    for (const char c : word) quoted += c == '\'' ? std::string("'\\''") : std::string(1, c);
    line += ' ' + (plain ? word : quoted + "'");
  }
  return line;
}

}  // namespace tool
