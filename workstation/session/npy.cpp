/// NumPy format 1.0: magic, version, the head's length in 16 bits, the head (a Python dict as text, padded
/// with spaces to a multiple of 64 bytes and ended by a newline), the values.
#include "session/npy.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstring>
#include <limits>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>

#include "session/bundle.h"
#include "session/file.h"

namespace morvale::session {
namespace {

static_assert(std::endian::native == std::endian::little, "values go to files as they are in memory");

constexpr std::string_view kMagic{"\x93NUMPY\x01\x00", 8};
constexpr size_t kPrefix = kMagic.size() + 2;

std::string shape_text(std::span<const int32_t> shape) {
  std::string text = "(";
  for (size_t i = 0; i < shape.size(); ++i) text += (i > 0 ? ", " : "") + std::to_string(shape[i]);
  return text + (shape.size() == 1 ? ",)" : ")");
}

/// What stands behind 'key': in the head, without the spaces before it.
std::string_view value_of(std::string_view head, std::string_view key) {
  const size_t at = head.find(key);
  if (at == std::string_view::npos) return {};
  const std::string_view rest = head.substr(at + key.size());
  const size_t begin = rest.find_first_not_of(": ");
  return begin == std::string_view::npos ? std::string_view{} : rest.substr(begin);
}

std::optional<std::vector<int32_t>> parse_shape(std::string_view text) {
  if (!text.starts_with('(')) return std::nullopt;
  std::vector<int32_t> shape;
  for (text.remove_prefix(1); !text.empty() && text.front() != ')';) {
    int32_t side = -1;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), side);
    if (error != std::errc{} || side < 0) return std::nullopt;
    shape.push_back(side);
    text.remove_prefix(static_cast<size_t>(end - text.data()));
    while (!text.empty() && (text.front() == ',' || text.front() == ' ')) text.remove_prefix(1);
  }
  if (text.empty()) return std::nullopt;
  return shape;
}

[[noreturn]] void fail(const std::string& file, const std::string& what) {
  throw BundleError(file + ": " + what);
}

/// The number of values of `shape`, as long as it is below `limit`.
std::optional<size_t> count_below(const std::vector<int32_t>& shape, uintmax_t limit) {
  if (std::find(shape.begin(), shape.end(), 0) != shape.end()) return 0;
  uintmax_t count = 1;
  for (const int32_t side : shape) {
    count *= static_cast<uintmax_t>(side);  // below limit times 2^31: no overflow for files under 8 GiB
    if (count >= limit) return std::nullopt;
  }
  return count;
}

}  // namespace

NpyHead read_npy_head(const std::string& file, uintmax_t size, const ReadAt& read) {
  char prefix[kPrefix];
  if (size < kPrefix) fail(file, "ends within the head");
  read(0, prefix, kPrefix);
  if (std::string_view(prefix, kMagic.size()) != kMagic) fail(file, "is no .npy file of version 1.0");
  const auto byte = [&](size_t i) { return static_cast<size_t>(static_cast<uint8_t>(prefix[i])); };
  std::string head(byte(8) + 256 * byte(9), '\0');
  NpyHead result{{}, kPrefix + head.size(), 0};
  if (size < result.data_offset) fail(file, "ends within the head");
  read(kPrefix, head.data(), head.size());

  if (!value_of(head, "'descr'").starts_with("'<f4'")) fail(file, "holds no little-endian float32 values");
  if (!value_of(head, "'fortran_order'").starts_with("False")) fail(file, "is not in C order");
  const auto shape = parse_shape(value_of(head, "'shape'"));
  if (!shape) fail(file, "has no readable shape");
  result.shape = *shape;
  const auto count = count_below(*shape, size);
  if (!count || *count * sizeof(float) != size - result.data_offset) {
    fail(file, "holds " + std::to_string((size - result.data_offset) / sizeof(float)) + " values, not " +
                   shape_text(*shape));
  }
  result.count = *count;
  return result;
}

NpyArray parse_npy(const std::string& file, std::span<const uint8_t> bytes) {
  const auto read = [&](uintmax_t offset, void* data, size_t size) {
    if (size > 0) std::memcpy(data, bytes.data() + offset, size);
  };
  const NpyHead head = read_npy_head(file, bytes.size(), read);
  NpyArray array{head.shape, std::vector<float>(head.count)};
  read(head.data_offset, array.values.data(), head.count * sizeof(float));
  return array;
}

uintmax_t most_npy_bytes(size_t values) {
  constexpr uintmax_t kLongestHead = 0xffff;
  return kPrefix + kLongestHead + values * sizeof(float);
}

NpyArray read_npy(const std::filesystem::path& file) { return parse_npy(file.string(), read_all(file)); }

std::vector<uint8_t> npy_bytes(std::span<const int32_t> shape, std::span<const float> values) {
  size_t count = 1;
  for (const int32_t side : shape) count *= static_cast<size_t>(side);
  if (count != values.size())
    throw std::runtime_error(std::to_string(values.size()) + " values are not of shape " + shape_text(shape));
  std::string head = "{'descr': '<f4', 'fortran_order': False, 'shape': " + shape_text(shape) + ", }";
  constexpr size_t kAlignment = 64;
  const size_t used = kPrefix + head.size() + 1;
  head.append((kAlignment - used % kAlignment) % kAlignment, ' ');
  head += '\n';
  const std::string length{static_cast<char>(head.size() % 256), static_cast<char>(head.size() / 256)};

  const std::string start = std::string(kMagic) + length + head;
  std::vector<uint8_t> file(start.size() + values.size_bytes());
  std::copy(start.begin(), start.end(), file.begin());
  if (!values.empty()) std::memcpy(file.data() + start.size(), values.data(), values.size_bytes());
  return file;
}

}  // namespace morvale::session
