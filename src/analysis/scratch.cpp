#include "analysis/scratch.h"

#include <array>

namespace morvale {
namespace {

/// The blocks that a thread's analyses work in, kept from one frame to the next: new memory would fault in
/// every page anew. One block per level, since an analysis may call another; they are freed with the thread.
struct ThreadBlocks {
  static constexpr size_t kLevels = 4;

  /// What no camera's map needs is not kept.
  static constexpr size_t kLargest = size_t{1} << 20;

  struct Block {
    std::unique_ptr<uint8_t[]> bytes;
    size_t size = 0;
  };
  std::array<Block, kLevels> blocks;
  size_t level = 0;
};

thread_local ThreadBlocks thread_blocks;

}  // namespace

Scratch::Scratch(size_t bytes) {
  ThreadBlocks& kept = thread_blocks;
  if (kept.level >= ThreadBlocks::kLevels || bytes > ThreadBlocks::kLargest) {
    own_ = std::make_unique_for_overwrite<uint8_t[]>(bytes);
    next_ = own_.get();
  } else {
    ThreadBlocks::Block& block = kept.blocks[kept.level];
    if (block.size < bytes) {
      block.bytes = std::make_unique_for_overwrite<uint8_t[]>(bytes);
      block.size = bytes;
    }
    next_ = block.bytes.get();
  }
  ++kept.level;
}

Scratch::~Scratch() { --thread_blocks.level; }

}  // namespace morvale
