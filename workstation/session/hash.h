/// What tells a changed part of a bundle from the recorded one.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace morvale::session {

/// XXH3, 64 bits, as 16 hexadecimal digits. Against damage, not against forgery.
std::string hash_text(const void* data, size_t size);
inline std::string hash_text(std::string_view text) { return hash_text(text.data(), text.size()); }

/// A JSON object's text with a last member "hash": that of everything in front of the comma before it.
std::string sealed(const std::string& object);

/// Whether a sealed text is as it was written. True for one without a seal, which older versions wrote.
bool is_intact(std::string_view object);

}  // namespace morvale::session
