/// The text of a bundle's session.json and of its lines in metadata.jsonl.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "session/bundle.h"

namespace morvale::session {

/// Hashes of a frame's files as they are stored, and of its record. Empty: no file, or an older version.
struct FrameHashes {
  std::string pixels, thin, logits, labels, preview, record;
};

/// One line of metadata.jsonl. The file names are those in the bundle; empty: the frame has no such file.
struct FrameLine {
  FrameInput input;  ///< without pixels
  int32_t process_result = 0;
  std::optional<int32_t> execute_result;
  std::optional<double> network_ms;
  std::string pixels, thin, logits, labels, preview;  ///< not both of the first two
  FrameHashes hashes;
};

/// Both texts end with a newline; the frame's has no other.
std::string session_text(const SessionInfo& info);
std::string frame_text(int index, const FrameLine& line);

/// Throw std::runtime_error with what is wrong, without the file's name.
SessionInfo parse_session(const std::string& text);
FrameLine parse_frame(int index, const std::string& text);

}  // namespace morvale::session
