#include "manual/completion.h"

namespace tool {
namespace {

constexpr const char* kBashHead = R"bash(# Completes morvale in bash. Made by `morvale completion bash`.
)bash";

/// The script is this and three tables in front of it. It needs no other package: bash-completion's helpers
/// are not there in every bash.
constexpr const char* kDriver = R"bash(
# Offers those of the words $2... that begin with $1; @file and @folder stand for names on the disk, @other for
# what only the user knows.
_morvale_offer() {
  local begin=$1 word names
  shift
  for word in "$@"; do
    case $word in
      @file | @folder)
        compopt -o filenames 2>/dev/null
        # The line is not unquoted yet; names on the disk are not quoted.
        names=${begin#[\"\']}
        names=${names//\\/}
        if [[ $word == @file ]]; then
          mapfile -t names < <(compgen -f -- "$names")
        else
          mapfile -t names < <(compgen -d -- "$names")
        fi
        COMPREPLY+=("${names[@]}")
        ;;
      @other) ;;
      "$begin"*) COMPREPLY+=("$word") ;;
    esac
  done
}

_morvale() {
  local current=${COMP_WORDS[COMP_CWORD]} command=${COMP_WORDS[1]} value= place=0 word i
  COMPREPLY=()
  if ((COMP_CWORD == 1)); then
    _morvale_offer "$current" $(_morvale_commands "$current")
    return
  fi
  # What is expected here, seen from the left: the value of a flag, or the argument at the next place.
  for ((i = 2; i < COMP_CWORD; i++)); do
    word=${COMP_WORDS[i]}
    if [[ -n $value ]]; then
      # bash may cut --flag=value into three words.
      [[ $word == = && ${COMP_WORDS[i - 1]} == -* ]] || value=
    elif [[ $word != -?* ]]; then
      ((place += 1))
    else
      value=$(_morvale_value "$command" "$word")
    fi
  done
  if [[ $current == --*=* ]]; then
    word=${current%%=*}
    _morvale_offer "${current#*=}" $(_morvale_value "$command" "$word")
    COMPREPLY=("${COMPREPLY[@]/#/$word=}")
  elif [[ -n $value ]]; then
    [[ $current == = ]] && current=
    _morvale_offer "$current" $value
  elif [[ $current == -* ]]; then
    _morvale_offer "$current" $(_morvale_flags "$command")
  else
    _morvale_offer "$current" $(_morvale_place "$command" "$place")
  fi
}

complete -F _morvale morvale
)bash";

std::string joined(const std::vector<std::string>& words) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : " ") + word;
  return text;
}

/// "front back", "auto none @file"; "@other" where nothing can be offered, which an unknown flag would look
/// like.
std::string offer_words(const Offer& offer) {
  std::vector<std::string> words = offer.words;
  if (offer.files) words.push_back("@file");
  if (offer.folders && !offer.files) words.push_back("@folder");
  return words.empty() ? "@other" : joined(words);
}

std::string function(const std::string& name, const std::string& comment, const std::string& subject,
                     const std::string& cases) {
  return "\n# " + comment + "\n" + name + "() {\n  case " + subject + " in\n" + cases + "  esac\n}\n";
}

std::string entry(const std::string& pattern, const std::string& words) {
  return "    " + pattern + ") echo " + shell_quoted(words) + " ;;\n";
}

std::string all_flags(const CommandHelp& command) {
  std::vector<std::string> flags;
  for (const ArgumentHelp& flag : command.flags)
    flags.insert(flags.end(), flag.flags.begin(), flag.flags.end());
  return joined(flags);
}

std::string value_entries(const CommandHelp& command) {
  std::string entries;
  for (const ArgumentHelp& flag : command.flags) {
    if (flag.value.empty()) continue;
    std::string pattern;
    for (const std::string& name : flag.flags)
      pattern += (pattern.empty() ? "" : " | ") + shell_quoted(command.name + " " + name);
    entries += entry(pattern, offer_words(offer_of(flag)));
  }
  return entries;
}

std::string place_entries(const CommandHelp& command) {
  std::string entries;
  for (size_t i = 0; i < command.places.size(); ++i) {
    const ArgumentHelp& place = command.places[i];
    const std::string pattern = place.repeated ? shell_quoted(command.name + " ") + "*"
                                               : shell_quoted(command.name + " " + std::to_string(i));
    entries += entry(pattern, offer_words(offer_of(place)));
  }
  return entries;
}

}  // namespace

std::string bash_completion(const std::vector<CommandHelp>& commands) {
  std::vector<std::string> names;
  std::string flags, values, places;
  for (const CommandHelp& command : commands) {
    names.push_back(command.name);
    flags += entry(command.name, all_flags(command));
    values += value_entries(command);
    places += place_entries(command);
  }
  return kBashHead +
         function("_morvale_commands", "What may stand first, where $1 stands now.", "$1",
                  entry("-*", "--help --version") + entry("*", joined(names))) +
         function("_morvale_flags", "The flags of the command $1.", "$1", flags) +
         function(
             "_morvale_value",
             "What may follow the flag $2 of the command $1: words, names on the disk, or something @other.",
             "\"$1 $2\"", values) +
         function("_morvale_place", "Likewise for the argument at place $2, counted from 0.", "\"$1 $2\"",
                  places) +
         kDriver;
}

}  // namespace tool
