/// Sizes in the names of raw frames and in flags: what is read is what was written.
#include "common/command.h"
#include "fuzz/draws.h"
#include "pictures/picture_size.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(data, data + size);
  const tool::FrameShape shape = tool::shape_from_name(text);
  HOLDS(shape.size || !shape.stride);
  if (shape.size) {
    const std::string stride = shape.stride ? "_s" + std::to_string(*shape.stride) : "";
    const tool::FrameShape again = tool::shape_from_name("a_" + text_of(*shape.size) + stride + ".nv21");
    HOLDS(again.size == shape.size && again.stride == shape.stride);
    try {
      check_frame_size("raw", *shape.size);
      HOLDS(tool::checked_stride("raw", *shape.size, shape.stride) >= shape.size->width);
    } catch (const tool::UsageError&) {
    }
  }
  try {
    const tool::FrameSize flag = tool::parse_size_flag("--size", text);
    HOLDS(flag.width >= 1 && flag.height >= 1 && flag.pixels() <= int64_t{1} << 28);
  } catch (const tool::UsageError&) {
  }
  return 0;
}
