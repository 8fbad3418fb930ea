#include "session/build_note.h"

#include <elf.h>
#include <link.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

namespace morvale::session {
namespace {

using Bytes = std::span<const char>;

constexpr std::string_view kOwner{"Morvale\0", 8};
constexpr uint32_t kBuild = 1;

/// The text of our note among those of a segment; empty where there is none.
std::string build_note(Bytes notes) {
  const auto padded = [](size_t size) { return (size + 3) / 4 * 4; };
  ElfW(Nhdr) head;
  while (notes.size() >= sizeof head) {
    std::memcpy(&head, notes.data(), sizeof head);
    notes = notes.subspan(sizeof head);
    const size_t owner = padded(head.n_namesz), text = padded(head.n_descsz);
    if (owner > notes.size() || text > notes.size() - owner) break;
    const bool ours =
        head.n_type == kBuild && std::string_view(notes.data(), head.n_namesz) == kOwner && head.n_descsz > 0;
    if (ours) return {notes.data() + owner, strnlen(notes.data() + owner, head.n_descsz)};
    notes = notes.subspan(owner + text);
  }
  return {};
}

int look_at(dl_phdr_info* info, size_t, void* found) {
  std::string& text = *static_cast<std::string*>(found);
  for (const ElfW(Phdr) & segment : std::span(info->dlpi_phdr, info->dlpi_phnum)) {
    if (segment.p_type != PT_NOTE) continue;
    // The loader tells addresses as numbers.  NOLINTNEXTLINE(performance-no-int-to-ptr)
    const auto* const begin = reinterpret_cast<const char*>(info->dlpi_addr + segment.p_vaddr);
    text = build_note({begin, segment.p_memsz});
    if (!text.empty()) return 1;
  }
  return 0;
}

}  // namespace

std::string library_identity() {
  std::string text;
  dl_iterate_phdr(look_at, &text);
  return text.empty() ? "unknown" : text;
}

}  // namespace morvale::session
