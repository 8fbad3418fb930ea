#pragma once

#include <string>
#include <vector>

#include "ab/ab_verdict.h"

namespace tool {

/// A recording's line of the table, and what stands above and below them.
std::string table_heading();
std::string table_line(const Verdict& verdict);
std::string totals_table(const std::vector<Verdict>& verdicts);

/// RFC 4180: a line for each field that changed, one with an empty field for a recording without any.
std::string verdict_csv_heading();
std::string verdict_csv(const Verdict& verdict);

/// "1000 recordings: 998 the same, 2 changed, 0 failed".
std::string summary(const std::vector<Verdict>& verdicts);

}  // namespace tool
