#include "record/next_symbol.h"

#include <dlfcn.h>

#include <cstdio>
#include <string>

namespace morvale::record {

void say(const char* text) {
  try {
    std::string line = std::string("vexa_record: ") + text;
    for (char& c : line) {
      if (c == '\n' || c == '\r') c = ' ';
    }
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stderr);
  } catch (...) {
    std::fputs("vexa_record: out of memory\n", stderr);
  }
}

void* next_symbol(const char* name) {
  void* symbol = dlsym(RTLD_NEXT, name);
  if (symbol == nullptr) {
    std::fprintf(stderr, "vexa_record: no %s behind this library; load it ahead of libmorvale_capture.so\n",
                 name);
  }
  return symbol;
}

void* library_variable(const char* name) { return dlsym(RTLD_DEFAULT, name); }

}  // namespace morvale::record
