/// A tar of the POSIX kind: each file behind a head of 512 bytes, filled up to 512; two empty heads end it.
#include "session/tar.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>

#include "session/bundle.h"

namespace morvale::session {
namespace {

constexpr size_t kBlock = 512;

struct Head {
  char name[100], mode[8], uid[8], gid[8], size[12], mtime[12], checksum[8], type, link[100], magic[6],
      version[2];
  char owner[32], group[32], device[16], prefix[155], unused[12];
};
static_assert(sizeof(Head) == kBlock);

/// The sum of the head's bytes, its own field taken for blanks.
unsigned checksum_of(Head head) {
  std::memset(head.checksum, ' ', sizeof head.checksum);
  unsigned sum = 0;
  for (const uint8_t byte : std::span(reinterpret_cast<const uint8_t*>(&head), sizeof head)) sum += byte;
  return sum;
}

template <size_t kSize>
std::string text_of(const char (&field)[kSize]) {
  return {field, strnlen(field, kSize)};
}

/// Octal digits, with blanks or zeros around them.
template <size_t kSize>
std::optional<uintmax_t> number_of(const char (&field)[kSize]) {
  uintmax_t value = 0;
  bool any = false;
  for (const char c : field) {
    if (c >= '0' && c <= '7') {
      value = value * 8 + static_cast<unsigned>(c - '0');
      any = true;
    } else if (c != ' ' && c != '\0') {
      return std::nullopt;
    } else if (any) {
      break;
    }
  }
  return any ? std::optional(value) : std::nullopt;
}

[[noreturn]] void refuse(const std::filesystem::path& path, const std::string& what) {
  throw BundleError(path.string() + ": " + what);
}

/// A recording from elsewhere must not make whoever unpacks it write outside its folder.
bool leads_out(const std::string& name) {
  if (name.starts_with('/')) return true;
  for (size_t begin = 0; begin <= name.size();) {
    const size_t end = std::min(name.find('/', begin), name.size());
    if (std::string_view(name).substr(begin, end - begin) == "..") return true;
    begin = end + 1;
  }
  return false;
}

/// Folders, and what newer tars say beside a file (its times to the nanosecond).
bool is_passed_over(char type) { return type == '5' || type == 'x' || type == 'g'; }

std::string full_name(const Head& head) {
  const std::string prefix = text_of(head.prefix), name = text_of(head.name);
  const bool posix = std::string_view(head.magic, sizeof head.magic) == std::string_view("ustar\0", 6);
  std::string full = posix && !prefix.empty() ? prefix + "/" + name : name;
  while (full.starts_with("./")) full.erase(0, 2);
  return full;
}

/// Behind the last file there are zeros only. A head that was lost would otherwise end the recording in
/// silence.
bool ends_at(const FilePart& tar, uintmax_t at) {
  char block[kBlock];
  for (; at < tar.size; at += kBlock) {
    const size_t count = std::min<uintmax_t>(kBlock, tar.size - at);
    read_bytes(tar, at, block, count);
    if (std::any_of(block, block + count, [](char byte) { return byte != '\0'; })) return false;
  }
  return true;
}

}  // namespace

void TarWriter::add(const std::string& name, std::span<const uint8_t> bytes) {
  Head head{};
  if (name.size() >= sizeof head.name) throw BundleError(name + ": the name is too long for a tar");
  std::copy(name.begin(), name.end(), head.name);
  std::snprintf(head.mode, sizeof head.mode, "%07o", 0644);
  std::snprintf(head.uid, sizeof head.uid, "%07o", 0);
  std::snprintf(head.gid, sizeof head.gid, "%07o", 0);
  std::snprintf(head.size, sizeof head.size, "%011zo", bytes.size());
  std::snprintf(head.mtime, sizeof head.mtime, "%011o", 0);  // the same recording is the same file
  head.type = '0';
  std::memcpy(head.magic, "ustar", 6);
  std::memcpy(head.version, "00", 2);
  std::snprintf(head.checksum, sizeof head.checksum, "%06o", checksum_of(head));
  head.checksum[7] = ' ';
  file_.write(&head, sizeof head);
  file_.write(bytes.data(), bytes.size());
  const char padding[kBlock] = {};
  file_.write(padding, (kBlock - bytes.size() % kBlock) % kBlock);
}

void TarWriter::finish() {
  const char end[2 * kBlock] = {};
  file_.write(end, sizeof end);
  file_.close();
}

std::map<std::string, TarEntry> tar_entries(const std::filesystem::path& path) {
  std::map<std::string, TarEntry> entries;
  const FilePart tar(path);
  for (uintmax_t at = 0;;) {
    Head head;
    if (tar.size < at + kBlock)
      refuse(path, at == 0 ? "is no packed recording" : "the file is cut off; copy it again");
    read_bytes(tar, at, &head, sizeof head);
    if (head.name[0] == '\0' && at > 0 && ends_at(tar, at)) return entries;
    const auto size = number_of(head.size), checksum = number_of(head.checksum);
    if (!size || checksum != checksum_of(head))
      refuse(path, at == 0 ? "is no packed recording" : "is damaged at byte " + std::to_string(at));
    const std::string name = full_name(head);
    at += kBlock;
    if (*size > tar.size - at) refuse(path, "the file is cut off within " + name + "; copy it again");
    if (leads_out(name)) refuse(path, "holds \"" + name + "\", which leads out of a recording");
    const bool file = head.type == '0' || head.type == '\0';
    if (!file && !is_passed_over(head.type)) refuse(path, "holds \"" + name + "\", which is no plain file");
    if (file && !entries.emplace(name, TarEntry{at, *size}).second) refuse(path, "holds " + name + " twice");
    at += (*size + kBlock - 1) / kBlock * kBlock;
  }
}

}  // namespace morvale::session
