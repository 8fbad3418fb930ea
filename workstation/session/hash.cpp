#include "session/hash.h"

#define XXH_INLINE_ALL
#include <xxhash.h>

#include <cstdint>

namespace morvale::session {
namespace {

constexpr std::string_view kMember = "\"hash\":";
constexpr size_t kDigits = 16;

}  // namespace

std::string hash_text(const void* data, size_t size) {
  const uint64_t hash = XXH3_64bits(data, size);
  std::string text;
  for (int shift = 60; shift >= 0; shift -= 4) text += "0123456789abcdef"[hash >> shift & 15];
  return text;
}

std::string sealed(const std::string& object) {
  size_t end = object.rfind('}');
  while (end > 0 && (object[end - 1] == '\n' || object[end - 1] == ' ')) --end;
  const std::string content = object.substr(0, end), rest = object.substr(end);
  // An object that is laid out in lines keeps its layout.
  const bool in_lines = rest.front() == '\n';
  return content + (in_lines ? ",\n  \"hash\": \"" : ",\"hash\":\"") + hash_text(content) + "\"" + rest;
}

bool is_intact(std::string_view object) {
  const size_t member = object.rfind(kMember);
  if (member == std::string_view::npos) return true;
  const size_t comma = object.find_last_of(',', member);
  const size_t quote = object.find('"', member + kMember.size());
  if (comma == std::string_view::npos || quote == std::string_view::npos) return false;
  return object.substr(quote + 1, kDigits) == hash_text(object.substr(0, comma));
}

}  // namespace morvale::session
