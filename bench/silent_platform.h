/// The four functions that the library takes from its platform, at no cost worth measuring: a log and
/// properties that are not there, and a runtime that answers every run at once.
#pragma once

#include <vector>

namespace bench {

/// The scores that every run returns from now on.
void answer_with(std::vector<float> scores);

}  // namespace bench
