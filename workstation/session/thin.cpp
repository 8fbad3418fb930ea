#include "session/thin.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <string>
#include <string_view>

namespace morvale::session {
namespace {

static_assert(std::endian::native == std::endian::little, "values go to files as they are in memory");

constexpr std::string_view kMagic = "MVTHIN01";

[[noreturn]] void refuse(const std::string& what) { throw std::runtime_error(what); }

template <size_t kChannels>
size_t sample_bytes(const ThinPlane& plane) {
  return plane.rows.size() * plane.columns.size() * kChannels;
}

/// Calls `visit` with the place of each sample in the plane.
template <size_t kChannels, class Visit>
void for_each_sample(const ThinPlane& plane, Visit visit) {
  for (const size_t row : plane.rows) {
    const size_t start = row * plane.row_bytes, last = (plane.bytes - start) / kChannels - 1;
    for (const size_t column : plane.columns) visit(start + kChannels * std::min(column, last));
  }
}

template <size_t kChannels>
uint8_t* take(const ThinPlane& plane, const uint8_t* data, uint8_t* samples) {
  for_each_sample<kChannels>(plane, [&](size_t at) {
    std::memcpy(samples, data + at, kChannels);
    samples += kChannels;
  });
  return samples;
}

template <size_t kChannels>
const uint8_t* put(const ThinPlane& plane, const uint8_t* samples, uint8_t* data) {
  for_each_sample<kChannels>(plane, [&](size_t at) {
    std::memcpy(data + at, samples, kChannels);
    samples += kChannels;
  });
  return samples;
}

/// Spreads the samples of each row to the right, and each row down to the next.
template <size_t kChannels>
void spread(const ThinPlane& plane, uint8_t* data) {
  for (size_t i = 0; i < plane.rows.size(); ++i) {
    const size_t start = size_t{plane.rows[i]} * plane.row_bytes;
    const size_t end = std::min<size_t>(start + plane.row_bytes, plane.bytes);
    for (size_t k = 0; k < plane.columns.size(); ++k) {
      const size_t from = start + kChannels * plane.columns[k];
      const size_t to = k + 1 < plane.columns.size() ? start + kChannels * plane.columns[k + 1] : end;
      for (size_t at = from + kChannels; at < std::min(to, end); ++at) data[at] = data[at - kChannels];
    }
    const size_t next = i + 1 < plane.rows.size() ? plane.rows[i + 1] * size_t{plane.row_bytes} : plane.bytes;
    for (size_t row = end; row < next; row += plane.row_bytes)
      std::copy_n(data + start, std::min<size_t>(plane.row_bytes, next - row), data + row);
  }
}

void append(std::vector<uint8_t>& bytes, uint32_t value) {
  const auto* const begin = reinterpret_cast<const uint8_t*>(&value);
  bytes.insert(bytes.end(), begin, begin + sizeof value);
}

/// As distances from one to the next, which are few different ones.
void append_positions(std::vector<uint8_t>& bytes, const std::vector<uint32_t>& positions) {
  uint32_t before = 0;
  for (const uint32_t position : positions) {
    append(bytes, position - before);
    before = position;
  }
}

void append(std::vector<uint8_t>& bytes, const ThinPlane& plane) {
  for (const uint32_t value : {plane.offset, plane.bytes, plane.row_bytes}) append(bytes, value);
  append(bytes, static_cast<uint32_t>(plane.rows.size()));
  append(bytes, static_cast<uint32_t>(plane.columns.size()));
  append_positions(bytes, plane.rows);
  append_positions(bytes, plane.columns);
}

/// Takes values from the front of a file's bytes.
class Values {
 public:
  explicit Values(std::span<const uint8_t> bytes) : rest_(bytes) {}

  std::span<const uint8_t> take(size_t count) {
    if (count > rest_.size()) refuse("ends too early");
    const auto taken = rest_.first(count);
    rest_ = rest_.subspan(count);
    return taken;
  }
  uint32_t number() {
    uint32_t value;
    std::memcpy(&value, take(sizeof value).data(), sizeof value);
    return value;
  }
  std::vector<uint32_t> positions(size_t count) {
    if (count > rest_.size() / sizeof(uint32_t)) refuse("ends too early");
    std::vector<uint32_t> positions(count);
    uint64_t position = 0;
    for (size_t i = 0; i < count; ++i) {
      const uint32_t distance = number();
      position += distance;
      if ((i > 0 && distance == 0) || position > std::numeric_limits<int32_t>::max())
        refuse("names samples that do not ascend");
      positions[i] = static_cast<uint32_t>(position);
    }
    return positions;
  }
  std::span<const uint8_t> rest() const { return rest_; }

 private:
  std::span<const uint8_t> rest_;
};

ThinPlane read_plane(Values& values, size_t channels, uint64_t pixel_bytes) {
  ThinPlane plane;
  plane.offset = values.number();
  plane.bytes = values.number();
  plane.row_bytes = values.number();
  const uint32_t rows = values.number(), columns = values.number();
  plane.rows = values.positions(rows);
  plane.columns = values.positions(columns);
  if (uint64_t{plane.offset} + plane.bytes > pixel_bytes) refuse("has a plane that leaves the frame");
  if (plane.rows.empty()) return plane;
  if (plane.row_bytes == 0) refuse("has rows without a length");
  if (uint64_t{plane.rows.back()} * plane.row_bytes + channels > plane.bytes)
    refuse("has samples that lie outside of their plane");
  return plane;
}

}  // namespace

void take_samples(ThinFrame& frame, const uint8_t* luma, const uint8_t* chroma) {
  frame.samples.resize(sample_bytes<1>(frame.luma) + sample_bytes<2>(frame.chroma));
  take<2>(frame.chroma, chroma, take<1>(frame.luma, luma, frame.samples.data()));
}

std::vector<uint8_t> thick_pixels(const ThinFrame& frame, size_t size) {
  std::vector<uint8_t> pixels(size);
  uint8_t* const luma = pixels.data() + frame.luma.offset;
  uint8_t* const chroma = pixels.data() + frame.chroma.offset;
  const auto put_samples = [&] {
    put<2>(frame.chroma, put<1>(frame.luma, frame.samples.data(), luma), chroma);
  };
  // The planes may share bytes: what is spread over one plane's samples from the other gives way to them.
  put_samples();
  spread<1>(frame.luma, luma);
  put_samples();
  spread<2>(frame.chroma, chroma);
  put_samples();
  return pixels;
}

std::vector<uint8_t> thin_bytes(const ThinFrame& frame) {
  std::vector<uint8_t> bytes(kMagic.begin(), kMagic.end());
  append(bytes, frame.luma);
  append(bytes, frame.chroma);
  bytes.insert(bytes.end(), frame.samples.begin(), frame.samples.end());
  return bytes;
}

ThinFrame parse_thin(std::span<const uint8_t> bytes, uint64_t pixel_bytes) {
  Values values(bytes);
  const auto magic = values.take(kMagic.size());
  if (!std::equal(magic.begin(), magic.end(), kMagic.begin())) refuse("holds no thin frame");
  ThinFrame frame;
  frame.luma = read_plane(values, 1, pixel_bytes);
  frame.chroma = read_plane(values, 2, pixel_bytes);
  const std::span<const uint8_t> samples = values.rest();
  const size_t expected = sample_bytes<1>(frame.luma) + sample_bytes<2>(frame.chroma);
  if (samples.size() != expected)
    refuse("holds " + std::to_string(samples.size()) + " bytes of samples, not " + std::to_string(expected));
  frame.samples.assign(samples.begin(), samples.end());
  return frame;
}

}  // namespace morvale::session
