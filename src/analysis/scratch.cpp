#include "analysis/scratch.h"

#include <array>

namespace morvale {
namespace {

/// One block per level, since an analysis may call another.
constexpr size_t kLevels = 4;

/// What no camera's map needs is not kept.
constexpr size_t kLargestKept = size_t{1} << 20;

struct Block {
  std::unique_ptr<uint8_t[]> bytes;
  size_t size = 0;
};

// Like all state of the library one set for the process, used by one thread at a time.
std::array<Block, kLevels> kept_blocks;
size_t level = 0;

/// Not zeroed: what is carved from it is uninitialised anyway.
std::unique_ptr<uint8_t[]> new_bytes(size_t count) { return std::unique_ptr<uint8_t[]>(new uint8_t[count]); }

}  // namespace

Scratch::Scratch(size_t bytes) {
  if (level >= kLevels || bytes > kLargestKept) {
    own_ = new_bytes(bytes);
    next_ = own_.get();
  } else {
    Block& block = kept_blocks[level];
    if (block.size < bytes) {
      block = {};
      block = {new_bytes(bytes), bytes};
    }
    next_ = block.bytes.get();
  }
  ++level;
}

Scratch::~Scratch() { --level; }

void free_scratch() { kept_blocks = {}; }

}  // namespace morvale
