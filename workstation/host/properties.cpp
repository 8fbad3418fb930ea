/// System properties on a workstation: the property persist.morvale.capture.debug is the environment variable
/// PERSIST_MORVALE_CAPTURE_DEBUG.
#include "platform/properties.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <string>

#include <morvale/core/export.h>

namespace {

char variable_letter(char c) {
  if (c >= 'a' && c <= 'z') return static_cast<char>(c - 'a' + 'A');
  return (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ? c : '_';
}

std::string variable_name(const char* property) {
  std::string name(property);
  std::transform(name.begin(), name.end(), name.begin(), variable_letter);
  return name;
}

}  // namespace

/// A longer value is cut to what a device's property can hold.
extern "C" MORVALE_API int __system_property_get(const char* name, char* value) {
  const char* setting = std::getenv(variable_name(name).c_str());
  const size_t length = setting == nullptr ? 0 : strnlen(setting, kPropertyValueMax - 1);
  if (length > 0) std::memcpy(value, setting, length);
  value[length] = '\0';
  return static_cast<int>(length);
}
