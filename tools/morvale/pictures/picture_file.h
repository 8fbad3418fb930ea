/// Pictures from and to files, raw or encoded.
#pragma once

#include <optional>
#include <string>

#include "pictures/picture.h"

namespace tool {

/// Reads a raw file as it is. Its size is `size`, else what its name says ("..._WxH.ENDING"), and its length
/// must fit exactly. Any other file is decoded as a photograph and brought to `wanted` (default: BGR) and to
/// `size` if there is one:
///   BGR, RGB    as decoded
///   Y           BGR2GRAY, which keeps greys as they are
///   NV21, NV12  BGRtoNV21, after the odd last column or row was dropped: there is one chroma pair for each
///               2 x 2 block
/// Throws UsageError, also for a raw file of a layout other than the wanted one.
Picture read_picture(const std::string& path, std::optional<FrameSize> size,
                     std::optional<Layout> wanted = std::nullopt);

/// Throws UsageError when write_picture could not write a picture of this layout under this name: the ending
/// belongs to another layout or to nothing, or the folder is missing.
void check_target(const std::string& path, Layout layout);

/// Writes a raw file, or encodes by the file's ending: RGB, BGR and planar BGR as colour, Y as grey, NV21
/// through NV21toRGB. Throws UsageError for a picture that the encoder refuses, RunError when writing fails.
void write_picture(const std::string& path, const Picture& picture);

}  // namespace tool
