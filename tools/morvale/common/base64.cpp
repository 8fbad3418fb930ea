#include "common/base64.h"

#include <nettle/base64.h>

namespace tool {

std::string base64(std::span<const uint8_t> bytes) {
  std::string text(BASE64_ENCODE_RAW_LENGTH(bytes.size()), '\0');
  base64_encode_raw(text.data(), bytes.size(), bytes.data());
  return text;
}

}  // namespace tool
