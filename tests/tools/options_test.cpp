#include "common/options.h"

#include <gtest/gtest.h>

#include "common/command.h"
#include "common/command_line.h"
#include "common/suggestion.h"

namespace tool {
namespace {

/// One option of every kind.
struct Values {
  bool flag = false;
  int whole = 1;
  std::optional<int> whole_if_any;
  float part = 0;
  std::string word = "front", text;
  std::optional<std::string> text_if_any;
  std::vector<std::string> list, places;
};

CommandLine line_of(Values& values) {
  return {"morvale try",
          "Tries.",
          "Notes.",
          {{"INPUT", &values.places, "Inputs", "", Required()},
           {"--whole", &values.whole, "A number", "N", Range{0, 9}},
           {"--perhaps", &values.whole_if_any, "Another", "N"},
           {"--bits", &values.whole, "Two numbers", "8|14"},
           {"--part", &values.part, "A part", "S", Range{0, 1000}},
           {"--camera", &values.word, "A word", "front|back"},
           {"--faces", &values.text, "A file or a word", "FILE|auto"},
           {"--text", &values.text_if_any, "A text", "TEXT"},
           {"--list", &values.list, "Repeatable", "FIELD=N"},
           {"--flag", &values.flag, "A flag", "", Excludes{"--text"}}}};
}

std::optional<std::set<std::string>> parse(Values& values, std::vector<std::string> words) {
  words.insert(words.begin(), "try");
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  return parse_options(line_of(values), static_cast<int>(argv.size()), argv.data());
}

std::string refusal(const std::vector<std::string>& words) {
  Values values;
  try {
    parse(values, words);
  } catch (const UsageError& error) {
    return error.what();
  }
  return "nothing refused";
}

TEST(Options, ValuesReachTheirTargets) {
  Values values;
  const auto given = parse(values, {"a", "--flag", "--whole=3", "--part", "2.5", "--camera", "back",
                                    "--faces", "anything", "--list", "x=1", "--list", "y=2", "b"});
  ASSERT_TRUE(given);
  EXPECT_EQ(*given,
            (std::set<std::string>{"INPUT", "--flag", "--whole", "--part", "--camera", "--faces", "--list"}));
  EXPECT_TRUE(values.flag);
  EXPECT_EQ(values.whole, 3);
  EXPECT_EQ(values.part, 2.5f);
  EXPECT_EQ(values.word, "back");
  EXPECT_EQ(values.text, "anything");
  // A list behind a flag takes one value at a time: b is an input.
  EXPECT_EQ(values.list, (std::vector<std::string>{"x=1", "y=2"}));
  EXPECT_EQ(values.places, (std::vector<std::string>{"a", "b"}));
  EXPECT_FALSE(values.whole_if_any || values.text_if_any);
}

TEST(Options, AnOptionalThatIsGivenIsThereThoughEmpty) {
  Values values;
  ASSERT_TRUE(parse(values, {"a", "--perhaps", "0", "--text", ""}));
  EXPECT_EQ(values.whole_if_any, 0);
  EXPECT_EQ(values.text_if_any, "");
}

TEST(Options, WhatCannotBeMeantIsRefusedInASentence) {
  const struct {
    std::vector<std::string> words;
    const char* sentence;
  } cases[] = {
      {{}, "INPUT is required; see morvale try --help."},
      {{"a", "--whole", "10"}, "--whole: Value 10 not in range 0 to 9; see morvale try --help."},
      {{"a", "--whole", "1.5"}, "--whole: Value 1.5 not in range 0 to 9; see morvale try --help."},
      {{"a", "--perhaps", "x"}, "Could not convert: --perhaps = x; see morvale try --help."},
      {{"a", "--camera", "up"}, "--camera: up not in {back,front}; see morvale try --help."},
      {{"a", "--bits", "9"}, "--bits: 9 not in {8,14}; see morvale try --help."},
      {{"a", "--part", "nan"}, "--part: Value nan is not a finite number; see morvale try --help."},
      {{"a", "--part", "-inf"}, "--part: Value -inf is not a finite number; see morvale try --help."},
      {{"a", "--camrea", "back"},
       "The following argument was not expected: --camrea; did you mean --camera? See morvale try --help."},
      {{"--lis=x=1", "a"},
       "The following argument was not expected: --lis=x=1; did you mean --list? See morvale try --help."},
      {{"a", "--flag", "--text", "t"}, "--text excludes --flag; see morvale try --help."},
      {{"a", "--sharpen"}, "The following argument was not expected: --sharpen; see morvale try --help."},
      {{"--tex", "t"},
       "The following argument was not expected: --tex; did you mean --text? See morvale try --help."},
  };
  for (const auto& c : cases) EXPECT_EQ(refusal(c.words), c.sentence);
}

TEST(Suggestion, IsTheNearestWithinAFewSlips) {
  const std::vector<std::string> commands = {"analyze", "replay", "convert", "compare",
                                             "scene",   "score",  "diff"};
  const struct {
    const char* word;
    const char* meant;  ///< empty: nothing is near
  } cases[] = {{"analyse", "analyze"},
               {"rpelay", "replay"},
               {"replays", "replay"},
               {"comp", "compare"},
               {"scne", "scene"},
               {"scroe", "score"},
               {"dif", "diff"},
               {"diff3", "diff"},
               {"record", ""},
               {"x", ""},
               {"", ""},
               {"--", ""},
               {"diagnose", ""}};
  for (const auto& c : cases) EXPECT_EQ(nearest(c.word, commands).value_or(""), c.meant) << c.word;
  EXPECT_EQ(nearest(std::string(100000, 'a'), commands), std::nullopt);  // would take a minute
}

TEST(CommandText, IsTakenAgainByAShell) {
  std::string words[] = {"replay", "two words", "it's", "*.jpg", "plain-word_1.2=3", ""};
  std::vector<char*> argv;
  for (std::string& word : words) argv.push_back(word.data());
  EXPECT_EQ(command_text(static_cast<int>(argv.size()), argv.data()),
            R"(morvale replay 'two words' 'it'\''s' '*.jpg' plain-word_1.2=3 '')");
}

}  // namespace
}  // namespace tool
