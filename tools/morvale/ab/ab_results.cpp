#include "ab/ab_results.h"

#include <fcntl.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "common/command.h"
#include "session/hash.h"
#include "session/json.h"

namespace tool {
namespace {

using morvale::session::Json;

std::string bytes_of(const std::string& file) {
  std::ifstream stream(file, std::ios::binary);
  if (!stream || std::filesystem::is_directory(file)) throw UsageError(file + " cannot be read as a file.");
  return {std::istreambuf_iterator<char>(stream), {}};
}

/// The whole lines at the beginning of a text.
size_t whole_lines(const std::string& text) {
  const size_t end = text.rfind('\n');
  return end == std::string::npos ? 0 : end + 1;
}

}  // namespace

std::string results_head(const std::string& old_library, const std::string& new_library,
                         const std::vector<std::string>& tolerances) {
  const Json head = {{"morvaleAb", 1},
                     {"old", morvale::session::hash_text(bytes_of(old_library))},
                     {"new", morvale::session::hash_text(bytes_of(new_library))},
                     {"tolerances", Json::list(tolerances)}};
  return head.dump() + "\n";
}

AbResults read_results(const std::string& file) {
  const std::string text = bytes_of(file), whole = text.substr(0, whole_lines(text));
  AbResults results;
  try {
    for (size_t begin = 0, end; begin < whole.size(); begin = end + 1) {
      end = whole.find('\n', begin);
      const Json line = morvale::session::parse_json(std::string_view(whole).substr(begin, end - begin));
      if (begin != 0) {
        results.verdicts.push_back(verdict_of(line));
      } else if (line.find("morvaleAb") != nullptr) {
        results.head = whole.substr(0, end + 1);
      } else {
        throw morvale::session::JsonError("begins with something else");
      }
    }
  } catch (const morvale::session::JsonError& error) {
    throw UsageError(file + " is no file of results of morvale ab: it " + error.what() + ".");
  }
  return results;
}

ResultsFile::ResultsFile(const std::string& file, const std::string& head) : name_(file) {
  std::error_code none;
  const bool fresh = !std::filesystem::exists(file, none) || std::filesystem::file_size(file, none) == 0;
  const size_t whole = fresh ? 0 : whole_lines(bytes_of(file));
  file_ = open(file.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
  if (file_ < 0 || ftruncate(file_, static_cast<off_t>(whole)) != 0)
    throw RunError(file + " cannot be written.");
  if (whole == 0) write(head);
}

ResultsFile::~ResultsFile() { close(file_); }

void ResultsFile::add(const Verdict& verdict) { write(json_of(verdict).dump() + "\n"); }

void ResultsFile::write(const std::string& line) {
  if (::write(file_, line.data(), line.size()) != static_cast<ssize_t>(line.size()))
    throw RunError(name_ + " cannot be written; what stands in it can be taken up.");
}

}  // namespace tool
