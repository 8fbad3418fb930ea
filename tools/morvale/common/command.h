/// What the subcommands of `morvale` share: how they are called and how they fail.
#pragma once

#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

#include "common/command_line.h"

namespace tool {

constexpr int kExitDone = 0;
constexpr int kExitFailed = 1;  ///< the work failed: a model that does not open, a failed frame, a full disk
constexpr int kExitUsage = 2;   ///< what the caller gave cannot be used: flags, files, sizes

constexpr int kExitInterrupted = 130;  ///< as a shell reports a program that Ctrl-C ended

/// What `morvale --help` and the manual say alike.
constexpr const char* kProgramSummary = "Morvale Capture on the command line";
struct ExitMeaning {
  int status;
  const char* text;
};
constexpr ExitMeaning kExitMeanings[] = {
    {kExitDone, "done"},
    {kExitFailed, "failed (compare and diff: different)"},
    {kExitUsage, "the command line or a file cannot be used"},
    {kExitInterrupted, "stopped by Ctrl-C"},
};

/// A subcommand as main finds it. Completion and manual take theirs from the same list.
struct Command {
  std::string_view name;
  const char* summary;
  int (*run)(int argc, char** argv);
};
std::span<const Command> commands();

/// Ends the command with kExitUsage. The text is one sentence that says what is wrong and what to do.
struct UsageError : std::runtime_error {
  using runtime_error::runtime_error;
};

/// Ends the command with kExitFailed.
struct RunError : std::runtime_error {
  using runtime_error::runtime_error;
};

/// The ends of the commands that compare.
constexpr int kExitSame = 0;
constexpr int kExitDifferent = 1;

/// Ends such a command. Any failure would end with the status that says "different": it ends as what cannot
/// be used does.
template <class Compare>
int comparison_status(Compare compare) {
  try {
    const int status = compare();
    flush_output();
    return status;
  } catch (const UsageError&) {
    throw;
  } catch (const RunError& error) {
    throw UsageError(error.what());
  } catch (const std::exception& error) {
    throw UsageError(std::string("the comparison failed: ") + error.what() + ".");
  }
}

/// "morvale: " and the text, as printable() has it, on a line of standard error: the text may hold what files
/// say.
void complain(const std::string& text);

/// The subcommands. argv[0] is the subcommand's name; the result is the exit status. They may throw.
int analyze_main(int argc, char** argv);
int replay_main(int argc, char** argv);
int convert_main(int argc, char** argv);
int compare_main(int argc, char** argv);
int scene_main(int argc, char** argv);
int score_main(int argc, char** argv);
int bench_main(int argc, char** argv);
int diff_main(int argc, char** argv);
int inspect_main(int argc, char** argv);
int pack_main(int argc, char** argv);
int ab_main(int argc, char** argv);
int selfcheck_main(int argc, char** argv);
int doctor_main(int argc, char** argv);
int completion_main(int argc, char** argv);
int manual_main(int argc, char** argv);

}  // namespace tool
