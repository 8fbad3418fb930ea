/// Arrays of scores: what is read is written and read again bit for bit.
#include <cstring>

#include "fuzz/draws.h"
#include "fuzz/memory_file.h"
#include "session/npy.h"

using namespace morvale::session;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const MemoryFile file(data, size);
  NpyArray array;
  try {
    array = read_npy(file.path());
  } catch (const BundleError&) {
    return 0;
  }
  HOLDS(array.values.size() * sizeof(float) < size);
  const NpyArray again = parse_npy("copy", npy_bytes(array.shape, array.values));
  HOLDS(again.shape == array.shape && again.values.size() == array.values.size());
  HOLDS(array.values.empty() ||
        std::memcmp(again.values.data(), array.values.data(), array.values.size() * sizeof(float)) == 0);
  return 0;
}
