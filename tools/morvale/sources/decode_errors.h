#pragma once

namespace tool {

/// Counts frames whose data FFmpeg's decoders complain of. They deliver such a frame all the same, with what
/// they make of the rest, and tell nobody but their log. One at a time: the log is the process's.
class DecodeErrors {
 public:
  /// From here on the log is read instead of written.
  DecodeErrors();
  ~DecodeErrors();
  DecodeErrors(const DecodeErrors&) = delete;
  DecodeErrors& operator=(const DecodeErrors&) = delete;

  /// Before a frame is asked for.
  void next_frame();
  /// Frames with complaints so far.
  int damaged_frames() const;
};

}  // namespace tool
