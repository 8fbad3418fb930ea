#include "common/command_help.h"

#include "common/command.h"
#include "common/options.h"

namespace tool {
namespace {

ArgumentHelp argument_help(const Option& option) {
  ArgumentHelp help;
  if (option.name.starts_with('-'))
    help.flags = {option.name};
  else
    help.name = option.name;
  help.value = option.value;
  help.text = option.help;
  help.required = std::holds_alternative<Required>(option.rule);
  help.repeated = std::holds_alternative<std::vector<std::string>*>(option.target);
  return help;
}

CommandHelp command_help(const Command& command) {
  const SubcommandHelp told = subcommand_help(command);
  CommandHelp help{
      std::string(command.name),
      command.summary,
      told.usage,
      told.line.introduction,
      told.line.notes,
      {},
      {{.flags = {"-h", "--help"}, .name = {}, .value = {}, .text = "Print this help message and exit"}}};
  for (const Option& option : told.line.options) {
    const ArgumentHelp argument = argument_help(option);
    (argument.flags.empty() ? help.places : help.flags).push_back(argument);
  }
  return help;
}

}  // namespace

std::vector<CommandHelp> all_command_helps() {
  std::vector<CommandHelp> helps;
  for (const Command& command : commands()) helps.push_back(command_help(command));
  return helps;
}

}  // namespace tool
