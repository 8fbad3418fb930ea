/// The core's work buffers: zeroed arrays with slack on both sides of the pointer.
///
/// The padded converter takes a portrait frame's negative margin as it is. It then writes up to PADSIZE
/// columns left of a row and reads up to 7 columns right of one, and a frame that is one row high after
/// shrinking makes it copy the row before the image. With the slack every such access stays in memory that
/// the core owns.
#pragma once

#include <cstddef>
#include <new>

namespace morvale {

constexpr std::size_t kWorkBufferSlack = 1024;  ///< bytes on each side; a row of the network input has 768

template <class T>
T* new_work_buffer(std::size_t count) {
  auto* block = new std::byte[count * sizeof(T) + 2 * kWorkBufferSlack]();
  return new (block + kWorkBufferSlack) T[count]();
}

template <class T>
void delete_work_buffer(T*& buffer) {
  if (buffer != nullptr) delete[](reinterpret_cast<std::byte*>(buffer) - kWorkBufferSlack);
  buffer = nullptr;
}

}  // namespace morvale
