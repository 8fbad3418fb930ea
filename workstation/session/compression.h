/// Zstandard, where the build has it: a device's need not.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace morvale::session {

/// The ending of a compressed file's name.
inline constexpr const char* kCompressedEnding = ".zst";

/// Compresses one piece after another with memory of its own.
class Compressor {
 public:
  /// A level of Zstandard.
  explicit Compressor(int level);
  ~Compressor();

  /// Whether this build compresses at all.
  static bool available();

  /// Throws std::runtime_error.
  std::vector<uint8_t> compress(std::span<const uint8_t> bytes);

 private:
  struct Context;
  std::unique_ptr<Context> context_;
};

/// Throws std::runtime_error for a damaged piece, for one of more than `most` bytes before it takes their
/// memory, and where this build reads none.
std::vector<uint8_t> decompress(std::span<const uint8_t> piece, uint64_t most);

}  // namespace morvale::session
