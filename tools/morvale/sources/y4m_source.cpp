/// YUV4MPEG2, uncompressed video as ffmpeg's "yuv4mpegpipe" writes it: a header line, then for each frame a
/// line "FRAME" and the planes Y, U, V. Only 4:2:0 with 8 bits is taken: its samples go into the frame as
/// they are. https://wiki.multimedia.cx/index.php/YUV4MPEG2
#include <algorithm>
#include <charconv>
#include <cstdio>
#include <memory>
#include <vector>

#include "common/command.h"
#include "sources/frame_source.h"

namespace tool {
namespace {

struct Closer {
  void operator()(std::FILE* file) const {
    if (file != stdin) std::fclose(file);
  }
};

class Y4mSource final : public FrameSource {
 public:
  explicit Y4mSource(const std::string& file)
      : name_(file == "-" ? "standard input" : file),
        file_(file == "-" ? stdin : std::fopen(file.c_str(), "rb")) {
    if (file_ == nullptr) throw UsageError(file + ": cannot be read; check the name.");
    read_header();
  }

  std::optional<SourceFrame> next() override {
    if (!read_frame()) return std::nullopt;
    Frame frame;
    frame.input = name_;
    frame.width = frame.stride = size_.width & ~1;
    frame.height = size_.height & ~1;
    fill(frame);
    SourceFrame delivered;
    if (rate_ > 0) delivered.seconds = next_ / rate_;
    delivered.number = next_++;
    delivered.input = input_of(std::move(frame));
    return delivered;
  }

  bool skip() override {
    if (!read_frame()) return false;
    ++next_;
    return true;
  }

 private:
  [[noreturn]] void refuse(const std::string& what) const { throw UsageError(name_ + ": " + what); }

  /// A line without its end; nothing at the end of the stream.
  std::optional<std::string> read_line() {
    constexpr size_t kLongest = 1024;
    std::string line;
    for (int c; (c = std::getc(file_.get())) != '\n'; line += static_cast<char>(c)) {
      if (c == EOF && line.empty()) return std::nullopt;
      if (c == EOF || line.size() == kLongest) refuse("is no YUV4MPEG2 stream, or a damaged one.");
    }
    return line;
  }

  int side(const std::string& digits) const {
    int value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc{} || end != digits.data() + digits.size() || value < 2 || value > kLargestSide)
      refuse("the stream's size is none of 2 to " + std::to_string(kLargestSide) + " pixels a side.");
    return value;
  }

  /// "30000:1001" frames a second; 0 where the stream does not tell.
  static double rate(const std::string& text) {
    int frames = 0, seconds = 0;
    // Nine digits fit. NOLINTNEXTLINE(cert-err34-c)
    const bool read = std::sscanf(text.c_str(), "%9d:%9d", &frames, &seconds) == 2;
    return read && frames > 0 && seconds > 0 ? double(frames) / seconds : 0;
  }

  void read_header() {
    const std::string line = read_line().value_or("");
    if (line.rfind("YUV4MPEG2 ", 0) != 0)
      refuse("is no YUV4MPEG2 stream; make one with ffmpeg -i VIDEO -pix_fmt yuv420p -f yuv4mpegpipe -");
    for (size_t at = 10; at < line.size();) {
      const size_t end = std::min(line.find(' ', at), line.size());
      const std::string word = line.substr(at, end - at);
      if (word[0] == 'W') size_.width = side(word.substr(1));
      if (word[0] == 'H') size_.height = side(word.substr(1));
      if (word[0] == 'F') rate_ = rate(word.substr(1));
      if (word[0] == 'C' && (word.rfind("C420", 0) != 0 || word.rfind("C420p", 0) == 0) &&
          word != "C420paldv")
        refuse("has the colour format " + word.substr(1) +
               "; only 4:2:0 with 8 bits is read: ffmpeg … -pix_fmt " + "yuv420p -f yuv4mpegpipe -");
      at = end + 1;
    }
    if (size_.width == 0 || size_.height == 0) refuse("the stream's header names no size.");
  }

  size_t frame_bytes() const {
    return static_cast<size_t>(size_.pixels()) + 2 * chroma_width() * chroma_height();
  }

  size_t chroma_width() const { return static_cast<size_t>(size_.width + 1) / 2; }
  size_t chroma_height() const { return static_cast<size_t>(size_.height + 1) / 2; }

  bool read_frame() {
    const std::optional<std::string> line = read_line();
    if (!line) return false;
    if (line->rfind("FRAME", 0) != 0)
      refuse("frame " + std::to_string(next_) + " does not begin with FRAME.");
    read_planes();
    return true;
  }

  /// The first frame's memory grows with what arrives: a header alone may claim any size.
  void read_planes() {
    constexpr size_t kPiece = 1 << 20;
    for (size_t have = 0; have < frame_bytes();) {
      const size_t count = std::min(kPiece, frame_bytes() - have);
      planes_.resize(std::max(planes_.size(), have + count));
      if (std::fread(planes_.data() + have, 1, count, file_.get()) != count)
        refuse("the stream ends within frame " + std::to_string(next_) + ".");
      have += count;
    }
  }

  /// Y as it is, V and U beside each other; an odd last column or row is dropped.
  void fill(Frame& frame) const {
    const auto width = static_cast<size_t>(frame.width), height = static_cast<size_t>(frame.height);
    const auto source_width = static_cast<size_t>(size_.width);
    frame.nv21.resize(width * height * 3 / 2);
    uint8_t* out = frame.nv21.data();
    for (size_t y = 0; y < height; ++y) out = std::copy_n(planes_.data() + y * source_width, width, out);
    const uint8_t* u = planes_.data() + static_cast<size_t>(size_.pixels());
    const uint8_t* v = u + chroma_width() * chroma_height();
    for (size_t y = 0; y < height / 2; ++y)
      for (size_t x = 0; x < width / 2; ++x) {
        *out++ = v[y * chroma_width() + x];
        *out++ = u[y * chroma_width() + x];
      }
  }

  std::string name_;
  std::unique_ptr<std::FILE, Closer> file_;
  FrameSize size_;
  std::vector<uint8_t> planes_;
  double rate_ = 0;
  int next_ = 0;
};

}  // namespace

std::unique_ptr<FrameSource> make_y4m_source(const std::string& file) {
  return std::make_unique<Y4mSource>(file);
}

}  // namespace tool
