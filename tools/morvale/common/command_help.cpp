#include "common/command_help.h"

#include "common/command.h"
#include "common/command_line.h"

namespace tool {
namespace {

ArgumentHelp argument_help(const CLI::Option& option) {
  ArgumentHelp help;
  for (const std::string& name : option.get_snames()) help.flags.push_back("-" + name);
  for (const std::string& name : option.get_lnames()) help.flags.push_back("--" + name);
  if (option.get_positional()) help.name = option.get_name(/*positional=*/true);
  if (option.get_items_expected_max() > 0) help.value = option.get_type_name();
  help.text = option.get_description();
  help.required = option.get_required();
  help.repeated = option.get_expected_max() > 1;
  return help;
}

std::string usage_of(const CLI::App& app) {
  const std::string help = app.help(), label = "\nUsage: ";
  const size_t begin = help.find(label) + label.size();
  return help.substr(begin, help.find('\n', begin) - begin);
}

CommandHelp command_help(const Command& command, const CLI::App& app) {
  CommandHelp help{std::string(command.name),
                   command.summary,
                   usage_of(app),
                   app.get_description(),
                   app.get_footer(),
                   {},
                   {}};
  for (const CLI::Option* option : app.get_options())
    (option->get_positional() ? help.places : help.flags).push_back(argument_help(*option));
  return help;
}

}  // namespace

std::vector<CommandHelp> all_command_helps() {
  std::vector<CommandHelp> helps;
  for (const Command& command : commands())
    read_command_line(command, [&](const CLI::App& app) { helps.push_back(command_help(command, app)); });
  return helps;
}

}  // namespace tool
