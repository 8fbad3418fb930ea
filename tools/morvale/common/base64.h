#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace tool {

/// RFC 4648, with padding.
std::string base64(std::span<const uint8_t> bytes);

}  // namespace tool
