/// The files of one frame, ready to be written.
#pragma once

#include <cstdint>
#include <list>
#include <span>
#include <string>
#include <vector>

#include "session/bundle.h"
#include "session/compression.h"

namespace morvale::session {

/// One of a bundle's files before it is written.
struct NewPart {
  std::string name;                ///< in the bundle
  std::span<const uint8_t> bytes;  ///< the frame's, or the FrameParts'
};

class FrameParts {
 public:
  /// Frame `index` of a session. The frame must outlive the parts. Throws std::runtime_error when its sizes
  /// do not fit.
  FrameParts(int index, const SessionInfo& info, const FrameInput& frame, const FrameOutput& output,
             std::span<const uint8_t> preview, Compressor* compressor);
  FrameParts(const FrameParts&) = delete;
  FrameParts& operator=(const FrameParts&) = delete;

  const std::vector<NewPart>& parts() const { return parts_; }
  const std::string& line() const { return line_; }  ///< for metadata.jsonl

 private:
  void store(const std::string& name, std::span<const uint8_t> bytes, std::string& name_in_line,
             std::string& hash_in_line);
  std::span<const uint8_t> keep(std::vector<uint8_t> bytes);

  Compressor* compressor_;
  std::list<std::vector<uint8_t>> memory_;  ///< of parts that are not the frame's own bytes
  std::vector<NewPart> parts_;
  std::string line_;
};

}  // namespace morvale::session
