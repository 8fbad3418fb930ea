#include "common/command_line.h"

#include <cstdio>
#include <iostream>
#include <string>
#include <utility>

#include "common/command.h"

namespace tool {
namespace {

/// Takes a help in place of standard output; null: nobody does.
const std::function<void(const CLI::App&)>* help_reader = nullptr;

void show_help(const CLI::App& app) {
  if (help_reader != nullptr)
    (*help_reader)(app);
  else
    std::cout << app.help();
}

}  // namespace

bool parse_command_line(CLI::App& app, int argc, char** argv) {
  try {
    app.parse(argc, argv);
    return true;
  } catch (const CLI::CallForHelp&) {
    show_help(app);
    return false;
  } catch (const CLI::ParseError& error) {
    throw UsageError(std::string(error.what()) + "; see " + app.get_name() + " --help.");
  }
}

void read_command_line(const Command& command, const std::function<void(const CLI::App&)>& read) {
  std::string name(command.name), flag = "--help";
  char* argv[] = {name.data(), flag.data(), nullptr};
  const auto* const outer = std::exchange(help_reader, &read);
  try {
    command.run(2, argv);
  } catch (...) {
    help_reader = outer;
    throw;
  }
  help_reader = outer;
}

void print_text(const std::string& text) {
  if (std::fputs(text.c_str(), stdout) < 0 || std::fflush(stdout) != 0)
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
