/// SHA-256, to name a file's content.
#pragma once

#include <array>
#include <cstdint>
#include <span>
#include <string>

namespace tool {

/// Takes bytes piece by piece; the pieces' sizes do not matter.
class Sha256 {
 public:
  void add(std::span<const uint8_t> bytes);

  /// The digest of all bytes so far, as 64 lower-case hexadecimal digits. Ends the object's use.
  std::string finish();

 private:
  static constexpr size_t kBlockBytes = 64;

  void add_block(const uint8_t* block);

  std::array<uint32_t, 8> state_ = {0x6a09e667, 0xbb67ae85, 0x3c6ef372, 0xa54ff53a,
                                    0x510e527f, 0x9b05688c, 0x1f83d9ab, 0x5be0cd19};
  std::array<uint8_t, kBlockBytes> pending_{};  ///< the begun block
  uint64_t bytes_ = 0;                          ///< taken so far
};

}  // namespace tool
