/// The build note of the library in this process.
#pragma once

#include <string>

namespace morvale::session {

/// "1.0.0, commit 0123456789ab, GCC 12.2.0, kernels portable avx2 avx512"; "unknown" for a library without a
/// note.
std::string library_identity();

}  // namespace morvale::session
