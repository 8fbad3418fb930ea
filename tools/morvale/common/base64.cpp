#include "common/base64.h"

namespace tool {

std::string base64(std::span<const uint8_t> bytes) {
  constexpr char kLetters[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  text.reserve((bytes.size() + 2) / 3 * 4);
  for (size_t i = 0; i < bytes.size(); i += 3) {
    const auto byte = [&](size_t at) { return at < bytes.size() ? uint32_t{bytes[at]} : 0u; };
    const uint32_t group = byte(i) << 16 | byte(i + 1) << 8 | byte(i + 2);
    text += kLetters[group >> 18];
    text += kLetters[group >> 12 & 63];
    text += i + 1 < bytes.size() ? kLetters[group >> 6 & 63] : '=';
    text += i + 2 < bytes.size() ? kLetters[group & 63] : '=';
  }
  return text;
}

}  // namespace tool
