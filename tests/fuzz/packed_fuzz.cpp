/// A packed recording of any bytes: it is refused in words, or every frame that has no damage can be read.
#include "fuzz/draws.h"
#include "fuzz/memory_file.h"
#include "session/bundle.h"
#include "session/frame_files.h"

using namespace morvale::session;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const MemoryFile file(data, size);
  try {
    const BundleReader bundle(file.path(), Damage::kTell);
    for (int i = 0; i < bundle.frame_count(); ++i) {
      const bool damaged = bundle.damage(i).has_value();
      try {
        const FrameInput read = bundle.input(i);
        HOLDS(read.nv21.size() == (bundle.has_pixels(i) ? pixel_bytes(read) : 0));
        bundle.output(i);
      } catch (const BundleError&) {
        HOLDS(damaged);
      }
    }
  } catch (const BundleError&) {
  }
  return 0;
}
