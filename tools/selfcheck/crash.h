/// A case that crashes is named too.
#pragma once

namespace morvale::selfcheck {

/// The case that runs now.
inline const char* case_under_way = "the beginning";

/// From now on a crash, or `seconds` without an end, writes one line to the descriptor, "FAILED: NAME
/// crashes" or "FAILED: NAME does not end", and then ends the process as it would have.
void name_crashes(int descriptor, unsigned seconds);

}  // namespace morvale::selfcheck
