/// The digests that every build must give: golden.inc, one line a figure. `./dev golden` makes it from a run;
/// nobody edits it.
#pragma once

#include <span>
#include <string>

#include "selfcheck/figures.h"

namespace morvale::selfcheck {

/// Empty when all figures are as they must be. Otherwise the name of the first that differs; figures that are
/// missing or that nobody expects differ too.
std::string first_difference(const Figures& figures);
std::string first_difference(const Figures& figures, const Figures& expected);

/// The text of golden.inc for these figures.
std::string golden_text(const Figures& figures);

/// Numbers so small that they lose precision are taken for 0 from now on, by this thread, or are not. A
/// caller of the library may have asked its processor for either.
void flush_small_numbers(bool flush);

/// Measures with the kernels in use, once as the processor is and once with small numbers flushed, and puts
/// the processor back. The name of the first figure that differs from the golden ones, or empty.
std::string check();

}  // namespace morvale::selfcheck
