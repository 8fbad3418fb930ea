/// Thin frames of any bytes: they are refused, or they lie inside their pixels and are written again as they
/// were. The first two bytes are how many pixels the frame has.
#include <stdexcept>

#include "fuzz/draws.h"
#include "session/thin.h"

using namespace morvale::session;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size < 2) return 0;
  const size_t pixels = data[0] + size_t{256} * data[1];
  const std::span<const uint8_t> bytes(data + 2, size - 2);
  try {
    const ThinFrame frame = parse_thin(bytes, pixels);
    HOLDS(thick_pixels(frame, pixels).size() == pixels);
    HOLDS(std::ranges::equal(thin_bytes(frame), bytes));
  } catch (const std::runtime_error&) {
  }
  return 0;
}
