#include "manual/completion.h"

namespace tool {
namespace {

constexpr const char* kZshHead = R"zsh(#compdef morvale
# Completes morvale in zsh. Made by `morvale completion zsh`.

_morvale_words_or_files() {
  _alternative "words:word:($*)" 'files:file:_files'
}

_morvale_words_or_folders() {
  _alternative "words:word:($*)" 'folders:folder:_files -/'
}

_morvale() {
  local curcontext=$curcontext state line
  local -A opt_args
  local -a commands
  commands=(
)zsh";

constexpr const char* kCommands = R"zsh(  )
  _arguments -C \
    '(- *)'{-h,--help}'[list the commands]' \
    '(- *)--version[print the version]' \
    '1:command:->command' \
    '*::argument:->argument'
  case $state in
    command) _describe command commands ;;
    argument)
      case $line[1] in
)zsh";

/// A file of fpath runs as the function's first call; a sourced one defines it.
constexpr const char* kTail = R"zsh(      esac
      ;;
  esac
}

if [[ $funcstack[1] == _morvale ]]; then
  _morvale "$@"
else
  compdef _morvale morvale
fi
)zsh";

/// `text` inside an argument of _arguments or _describe, where these characters divide.
std::string escaped(const std::string& text) {
  std::string result;
  for (const char c : text) {
    if (c == '\\' || c == '[' || c == ']' || c == ':') result += '\\';
    result += c;
  }
  return result;
}

std::string action(const Offer& offer) {
  std::string words;
  for (const std::string& word : offer.words) words += (words.empty() ? "" : " ") + word;
  if (offer.files) return words.empty() ? "_files" : " _morvale_words_or_files " + words;
  if (offer.folders) return words.empty() ? "_files -/" : " _morvale_words_or_folders " + words;
  return words.empty() ? " " : words.insert(0, 1, '(').append(1, ')');
}

/// How _arguments writes that a value follows: a long flag's as "--flag value" or "--flag=value".
std::string value_mark(const std::string& flag) { return flag.rfind("--", 0) == 0 ? "=" : "+"; }

/// One more argument of _arguments, on a line of its own.
void add_rule(std::string& rules, const std::string& rule) {
  rules.append(" \\\n            ").append(shell_quoted(rule));
}

void add_flag(std::string& rules, const ArgumentHelp& flag) {
  std::string names;
  for (const std::string& name : flag.flags) names += (names.empty() ? "" : " ") + name;
  for (const std::string& name : flag.flags) {
    std::string rule = flag.repeated ? "*" : "(" + names + ")";
    rule += name;
    if (!flag.value.empty()) rule += value_mark(name);
    rule.append("[").append(escaped(flag.text)).append("]");
    if (!flag.value.empty())
      rule.append(":").append(escaped(flag.value)).append(":").append(action(offer_of(flag)));
    add_rule(rules, rule);
  }
}

void add_place(std::string& rules, const ArgumentHelp& place) {
  std::string rule = place.repeated ? "*:" : ":";
  add_rule(rules, rule.append(escaped(place.name)).append(":").append(action(offer_of(place))));
}

std::string command_case(const CommandHelp& command) {
  std::string text = "        " + command.name + ")\n          _arguments";
  for (const ArgumentHelp& flag : command.flags) add_flag(text, flag);
  for (const ArgumentHelp& place : command.places) add_place(text, place);
  return text + "\n          ;;\n";
}

}  // namespace

std::string zsh_completion(const std::vector<CommandHelp>& commands) {
  std::string list, cases;
  for (const CommandHelp& command : commands) {
    list += "    " + shell_quoted(escaped(command.name) + ":" + escaped(command.summary)) + "\n";
    cases += command_case(command);
  }
  return kZshHead + list + kCommands + cases + kTail;
}

}  // namespace tool
