/// Arrays of scores: what is read is written and read again bit for bit.
#include <cstring>

#include "fuzz/draws.h"
#include "fuzz/memory_file.h"
#include "session/bundle.h"

using namespace morvale::session;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const MemoryFile file(data, size), copy(data, 0);
  NpyArray array;
  try {
    array = read_npy(file.path());
  } catch (const BundleError&) {
    return 0;
  }
  HOLDS(array.values.size() * sizeof(float) < size);
  write_npy(copy.path(), array.shape, array.values);
  const NpyArray again = read_npy(copy.path());
  HOLDS(again.shape == array.shape && again.values.size() == array.values.size());
  HOLDS(array.values.empty() ||
        std::memcmp(again.values.data(), array.values.data(), array.values.size() * sizeof(float)) == 0);
  return 0;
}
