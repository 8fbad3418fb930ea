#pragma once

#include <string_view>

namespace tool {

/// The page without its data, as tools/report/ builds it; empty in a program that was built without it.
std::string_view report_template();

}  // namespace tool
