#include "command_line.h"

#include <iostream>
#include <string>

#include "command.h"

namespace tool {

bool parse_command_line(CLI::App& app, int argc, char** argv) {
  try {
    app.parse(argc, argv);
    return true;
  } catch (const CLI::CallForHelp&) {
    std::cout << app.help();
    return false;
  } catch (const CLI::ParseError& error) {
    throw UsageError(std::string(error.what()) + "; see " + app.get_name() + " --help.");
  }
}

}  // namespace tool
