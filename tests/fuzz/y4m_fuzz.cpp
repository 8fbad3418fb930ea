/// Uncompressed video: what is delivered has the size that it says, and the rest is refused in words.
#include "common/command.h"
#include "fuzz/draws.h"
#include "fuzz/memory_file.h"
#include "sources/frame_source.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const MemoryFile file(data, size);
  try {
    const auto source = tool::make_y4m_source(file.path());
    for (int number = 0; const auto frame = source->next(); ++number) {
      const MorvaleData_t& record = frame->input.record;
      HOLDS(frame->number == number && record.width % 2 == 0 && record.height % 2 == 0);
      HOLDS(frame->input.nv21.size() == size_t(record.width) * size_t(record.height) * 3 / 2);
      if (number % 2 == 0) number += source->skip();
    }
  } catch (const tool::UsageError&) {
  }
  return 0;
}
