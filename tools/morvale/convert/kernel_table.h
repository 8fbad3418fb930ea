#pragma once

#include <string>

namespace tool {

/// The kernels with what they take, what they give and their flags, for people.
std::string kernel_table_text();
/// The same for scripts: a list of {"kernel", "takes", "gives", "flags": [{"name", "value", "required"}],
/// "summary"}.
std::string kernel_table_json();

}  // namespace tool
