/// The file that a comparison can be taken up from, and joined with others: a head that names both libraries
/// and the tolerances, then a line of JSON for each recording.
#pragma once

#include <set>
#include <string>
#include <vector>

#include "ab/ab_verdict.h"

namespace tool {

struct AbResults {
  std::string head;  ///< as it stands in the file
  std::vector<Verdict> verdicts;
};

/// The head for these libraries, which it knows by their bytes.
std::string results_head(const std::string& old_library, const std::string& new_library,
                         const std::vector<std::string>& tolerances);

/// A line that was cut off at the end of the file is left out. Throws UsageError.
AbResults read_results(const std::string& file);

/// Appends to the file and leaves whole lines behind whatever happens. Throws RunError.
class ResultsFile {
 public:
  /// A file that ends inside a line is cut behind its last whole one.
  ResultsFile(const std::string& file, const std::string& head);
  ~ResultsFile();
  ResultsFile(const ResultsFile&) = delete;
  ResultsFile& operator=(const ResultsFile&) = delete;

  void add(const Verdict& verdict);

 private:
  void write(const std::string& line);
  std::string name_;
  int file_ = -1;
};

}  // namespace tool
