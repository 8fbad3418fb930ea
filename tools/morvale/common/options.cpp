#include "common/options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cmath>
#include <utility>

#include "common/command.h"
#include "common/command_line.h"
#include "common/suggestion.h"

namespace tool {
namespace {

/// Takes a help in place of standard output; null: nobody does.
SubcommandHelp* help_taker = nullptr;

bool is_closed(const std::vector<std::string>& words) {
  return std::all_of(words.begin(), words.end(), is_word);
}

/// The help names the allowed values already: the library's lists of them would stand there twice.
CLI::Validator one_of(const std::vector<std::string>& words, bool numbers) {
  if (!numbers) return CLI::IsMember(std::set<std::string>(words.begin(), words.end())).description("");
  std::set<int> values;
  for (const std::string& word : words) values.insert(std::stoi(word));
  return CLI::IsMember(values).description("");
}

CLI::Validator within(const Range& range, bool whole) {
  if (!whole) return CLI::Range(range.least, range.most).description("");
  return CLI::Range(static_cast<int>(range.least), static_cast<int>(range.most)).description("");
}

/// Not a number passes every comparison with a range, and no figure of ours is infinite.
CLI::Validator finite() {
  return {[](std::string& text) {
            double value = 0;
            const bool usable = !CLI::detail::lexical_cast(text, value) || std::isfinite(value);
            return usable ? std::string() : "Value " + text + " is not a finite number";
          },
          ""};
}

template <class T>
bool is_for(const Option& option) {
  return std::holds_alternative<T*>(option.target) ||
         std::holds_alternative<std::optional<T>*>(option.target);
}

CLI::Option* add(CLI::App& app, const Option& option) {
  if (bool* const* flag = std::get_if<bool*>(&option.target))
    return app.add_flag(option.name, **flag, option.help);
  return std::visit([&](auto* target) { return app.add_option(option.name, *target, option.help); },
                    option.target)
      ->type_name(option.value);
}

void add_checks(CLI::App& app, const Option& option, CLI::Option& added) {
  const bool whole = is_for<int>(option);
  if (is_for<float>(option) || std::holds_alternative<double*>(option.target)) added.check(finite());
  // "-1" would come out as the largest number.
  if (std::holds_alternative<uint64_t*>(option.target))
    added.check(CLI::Validator(CLI::NonNegativeNumber).description(""));
  const std::vector<std::string> words = alternatives(option.value);
  if (is_closed(words)) added.check(one_of(words, whole));
  if (const Range* range = std::get_if<Range>(&option.rule)) added.check(within(*range, whole));
  if (const Excludes* excludes = std::get_if<Excludes>(&option.rule))
    added.excludes(app.get_option(excludes->other));
  added.required(std::holds_alternative<Required>(option.rule));
  // A list behind a flag would swallow the arguments behind its first value.
  if (!added.get_positional() && std::holds_alternative<std::vector<std::string>*>(option.target))
    added.allow_extra_args(false);
}

void declare(CLI::App& app, const CommandLine& line) {
  for (const Option& option : line.options) add_checks(app, option, *add(app, option));
  app.footer(line.notes);
}

/// What an unknown option was meant to be, if that can be guessed.
std::string meant_option(const CLI::App& app, const CommandLine& line) {
  std::vector<std::string> names{"--help"};
  for (const Option& option : line.options)
    if (option.name.starts_with('-')) names.push_back(option.name);
  for (const std::string& word : app.remaining())
    if (word.starts_with("--")) return did_you_mean(word.substr(0, word.find('=')), names);
  return {};
}

std::string usage_of(const CLI::App& app) {
  const std::string help = app.help(), label = "\nUsage: ";
  const size_t begin = help.find(label) + label.size();
  return help.substr(begin, help.find('\n', begin) - begin);
}

void show_help(const CLI::App& app, const CommandLine& line) {
  if (help_taker != nullptr)
    *help_taker = {line, usage_of(app)};
  else
    print_text(app.help());
}

}  // namespace

std::optional<std::set<std::string>> parse_options(const CommandLine& line, int argc, char** argv) {
  CLI::App app(line.introduction, line.name);
  declare(app, line);
  try {
    app.parse(argc, argv);
  } catch (const CLI::CallForHelp&) {
    show_help(app, line);
    return std::nullopt;
  } catch (const CLI::ParseError& error) {
    const std::string hint = meant_option(app, line);
    throw UsageError(error.what() + (hint.empty() ? "; see " : hint + " See ") + line.name + " --help.");
  }
  std::set<std::string> given;
  for (const Option& option : line.options)
    if (app.count(option.name) > 0) given.insert(option.name);
  return given;
}

std::vector<std::string> alternatives(const std::string& value) {
  std::vector<std::string> parts{""};
  for (const char c : value) {
    if (c == '|')
      parts.emplace_back();
    else
      parts.back() += c;
  }
  return parts;
}

bool is_word(const std::string& alternative) {
  return !alternative.empty() && std::all_of(alternative.begin(), alternative.end(), [](char c) {
    return (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' || c == '_' || c == ':';
  });
}

SubcommandHelp subcommand_help(const Command& command) {
  std::string name(command.name), flag = "--help";
  char* argv[] = {name.data(), flag.data(), nullptr};
  SubcommandHelp help;
  SubcommandHelp* const outer = std::exchange(help_taker, &help);
  try {
    command.run(2, argv);
  } catch (...) {
    help_taker = outer;
    throw;
  }
  help_taker = outer;
  return help;
}

}  // namespace tool
