/// What went into two recordings and what the network answered: where do they part?
#pragma once

#include <string>
#include <vector>

#include "inspect/inspect_source.h"

namespace tool {

/// One kind of data over all frames that both bundles have.
struct SessionNote {
  const char* what;      ///< "inputs", "pixels", "scores", ...
  int compared = 0;      ///< frames of which both bundles have it
  int first_frame = -1;  ///< where it differs first; -1: nowhere
  std::string detail;    ///< what differs there, or nothing
};

/// Both sources are bundles. Pixels, scores and label maps are read up to the first difference only. Throws
/// BundleError.
std::vector<SessionNote> compare_sessions(const RecordSource& a, const RecordSource& b);

}  // namespace tool
