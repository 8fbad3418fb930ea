#include "convert/kernel_table.h"

#include <algorithm>
#include <cstdio>

#include "convert/kernel_flags.h"
#include "pictures/picture.h"
#include "session/json.h"

namespace tool {
namespace {

/// "--mode N [--grid FILE]"
std::string flags_text(const Kernel& kernel) {
  std::string text;
  for (const FlagInfo& info : kernel_flags()) {
    if (info.group != kernel.group) continue;
    const std::string flag = std::string(info.name) + " " + info.value;
    text += info.required ? " " + flag : " [" + flag + "]";
  }
  return text.empty() ? text : text.substr(1);
}

std::string padded(std::string_view text, size_t width) {
  return std::string(text) + std::string(std::max(width, text.size()) - text.size(), ' ');
}

}  // namespace

std::string kernel_table_text() {
  size_t width = 0;
  for (const Kernel& kernel : kernel_list::kKernels) width = std::max(width, kernel.name.size());
  const auto line = [&](std::string_view name, std::string_view takes, std::string_view gives,
                        const std::string& rest) {
    return padded(name, width) + "  " + padded(takes, 5) + "  " + padded(gives, 10) + "  " + rest + "\n";
  };
  std::string text = line("kernel", "takes", "gives", "what it does, and its flags");
  for (const Kernel& kernel : kernel_list::kKernels) {
    text += line(kernel.name, name_of(kernel.takes), name_of(kernel.gives), kernel.summary);
    if (const std::string flags = flags_text(kernel); !flags.empty()) text += line("", "", "", "  " + flags);
  }
  text += "\nFlags in brackets may be left out:\n";
  for (const FlagInfo& info : kernel_flags())
    text += "  " + padded(std::string(info.name) + " " + info.value, 18) + "  " + info.help + "\n";
  return text;
}

std::string kernel_table_json() {
  using morvale::session::Json;
  Json list = Json::array();
  for (const Kernel& kernel : kernel_list::kKernels) {
    Json flags = Json::array();
    for (const FlagInfo& info : kernel_flags())
      if (info.group == kernel.group)
        flags.push_back({{"name", info.name}, {"value", info.value}, {"required", info.required}});
    list.push_back({{"kernel", kernel.name},
                    {"takes", name_of(kernel.takes)},
                    {"gives", name_of(kernel.gives)},
                    {"flags", flags},
                    {"summary", kernel.summary}});
  }
  return list.dump(1) + "\n";
}

}  // namespace tool
