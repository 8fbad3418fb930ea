#pragma once

#include <string>

namespace tool {

/// Sends the library beside this program through its list of figures (tools/selfcheck), with the kernels in
/// use. The name of the first that differs from every build's, or empty. A crash is named on standard error.
std::string library_difference();

/// The set of kernels in use.
std::string kernels_in_use();

}  // namespace tool
