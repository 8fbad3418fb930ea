/// The list of the check: what the library computes over fixed inputs, through its exported interface alone,
/// with the kernels in use. A new export joins one of these lists (tests/selfcheck/exports_test.sh).
///
/// The platform's four functions must be there; the runtime is asked for a session, but answers no frame.
/// The library prints lines on standard output and in the log on the way.
#pragma once

#include "selfcheck/figures.h"

namespace morvale::selfcheck {

void measure_kernels(Figures& figures);   ///< one figure a kernel
void measure_network(Figures& figures);   ///< the steps around the network, colours by the pixel, orders
void measure_analyses(Figures& figures);  ///< the analyses on maps of their own
void measure_frames(Figures& figures);    ///< whole frames, one figure for each part of what they give

/// All of them.
Figures measure();

}  // namespace morvale::selfcheck
