/// Sections of Android's system trace. On a device they show in a trace of the process when a library with
/// these two functions (libandroid) is loaded in it; anywhere else the marks cost one look at an address.
#pragma once

extern "C" {
[[gnu::weak]] void ATrace_beginSection(const char* name);
[[gnu::weak]] void ATrace_endSection();
}

namespace morvale {

/// A section for as long as it lives.
class TraceMark {
 public:
  explicit TraceMark(const char* name) {
    if (ATrace_beginSection != nullptr) ATrace_beginSection(name);
  }
  ~TraceMark() {
    if (ATrace_endSection != nullptr) ATrace_endSection();
  }
  TraceMark(const TraceMark&) = delete;
  TraceMark& operator=(const TraceMark&) = delete;
};

}  // namespace morvale
