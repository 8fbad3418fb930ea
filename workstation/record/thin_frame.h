/// What of a frame is kept in a thin recording: the samples that the library's shrink reads.
#pragma once

#include <optional>

#include "session/bundle.h"

namespace morvale::record {

/// `record` has its planes, which are read; `input` says where its pixels belong. Empty for a frame that the
/// library does not use.
std::optional<session::ThinFrame> thin_frame(const MorvaleData_t& record, const session::FrameInput& input,
                                             int32_t pad_size);

/// The same of a recorded frame that holds its pixels whole.
std::optional<session::ThinFrame> thin_frame(const session::FrameInput& whole, int32_t pad_size);

}  // namespace morvale::record
