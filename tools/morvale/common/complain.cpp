#include <cstdio>

#include "common/command.h"
#include "session/printable.h"

namespace tool {

void complain(const std::string& text) {
  const std::string line = "morvale: " + morvale::session::printable(text) + "\n";
  std::fwrite(line.data(), 1, line.size(), stderr);
}

}  // namespace tool
