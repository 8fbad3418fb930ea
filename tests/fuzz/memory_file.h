/// A file in memory, for readers that take a path.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <new>
#include <string>

class MemoryFile {
 public:
  MemoryFile(const uint8_t* data, size_t size) : descriptor_(memfd_create("fuzz", 0)) {
    if (write(descriptor_, data, size) != static_cast<ssize_t>(size)) throw std::bad_alloc();
  }
  ~MemoryFile() { close(descriptor_); }
  MemoryFile(const MemoryFile&) = delete;
  MemoryFile& operator=(const MemoryFile&) = delete;

  std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor_); }

 private:
  int descriptor_;
};
