#include "diff/diff_session.h"

#include <algorithm>
#include <cstring>
#include <string_view>

#include "session/frame_files.h"
#include "session/json.h"

namespace tool {
namespace {

using morvale::session::BundleReader;
using morvale::session::FrameLine;
using morvale::session::FrameOutput;
using morvale::session::Json;
using morvale::session::SessionInfo;

std::string pair_text(const std::string& key, const Json& a, const Json& b) {
  return key + ": A " + a.dump() + ", B " + b.dump();
}

/// Null where there is none.
Json member(const Json& object, const char* key) {
  const Json* value = object.find(key);
  return value != nullptr ? *value : Json();
}

/// The first of `keys` whose values differ, or nothing.
std::string first_pair(const Json& a, const Json& b, std::initializer_list<const char*> keys) {
  for (const char* key : keys) {
    const Json left = member(a, key), right = member(b, key);
    if (left != right) return pair_text(key, left, right);
  }
  return {};
}

Json json_of(const FrameLine& line) {
  return morvale::session::parse_json(morvale::session::frame_text(0, line));
}

SessionNote compare_lines(const char* what, const RecordSource& a, const RecordSource& b,
                          std::initializer_list<const char*> keys) {
  SessionNote note{what, 0, -1, {}};
  const size_t shared = std::min(a.lines.size(), b.lines.size());
  for (size_t i = 0; i < shared && note.first_frame < 0; ++i) {
    ++note.compared;
    note.detail = first_pair(json_of(a.lines[i]), json_of(b.lines[i]), keys);
    if (!note.detail.empty()) note.first_frame = static_cast<int>(i);
  }
  return note;
}

SessionNote compare_infos(const SessionInfo& a, const SessionInfo& b, size_t frames) {
  SessionNote note{"session", static_cast<int>(frames), -1, {}};
  // How it was made is for people; two makers may well record the same.
  note.detail =
      first_pair(morvale::session::parse_json(session_text(a)), morvale::session::parse_json(session_text(b)),
                 {"camera_type", "pad_size", "net_size", "open_result"});
  return note;
}

/// Equal in every bit: a not-a-number equals itself, 0 is not -0.
template <class T>
bool same_bytes(const std::vector<T>& a, const std::vector<T>& b) {
  return a.size() == b.size() && std::memcmp(a.data(), b.data(), a.size() * sizeof(T)) == 0;
}

/// Whether two frames have the same pixels; where one keeps some samples only, the same in their places.
bool same_pixels(const BundleReader& a, const BundleReader& b, int frame) {
  if (a.is_thin(frame) == b.is_thin(frame)) return a.input(frame).nv21 == b.input(frame).nv21;
  const BundleReader &thin = a.is_thin(frame) ? a : b, &whole = a.is_thin(frame) ? b : a;
  const morvale::session::ThinFrame kept = thin.thin_frame(frame);
  const std::vector<uint8_t> pixels = whole.input(frame).nv21;
  const uint64_t size = pixel_bytes(thin.metadata(frame));
  if (pixels.size() != size) return false;
  morvale::session::ThinFrame taken = kept;
  take_samples(taken, pixels.data() + kept.luma.offset, pixels.data() + kept.chroma.offset);
  return taken.samples == kept.samples;
}

SessionNote compare_pixels(const RecordSource& a, const RecordSource& b) {
  SessionNote note{"pixels", 0, -1, {}};
  const int shared = static_cast<int>(std::min(a.lines.size(), b.lines.size()));
  for (int frame = 0; frame < shared && note.first_frame < 0; ++frame) {
    if (!a.bundle->has_pixels(frame) || !b.bundle->has_pixels(frame)) continue;
    ++note.compared;
    if (!same_pixels(*a.bundle, *b.bundle, frame)) note.first_frame = frame;
  }
  return note;
}

/// Compares what `name` of a line says the frame has, as `read` gives it for a bundle and a frame.
template <class Name, class Read>
SessionNote compare_files(const char* what, const RecordSource& a, const RecordSource& b, Name name,
                          Read read) {
  SessionNote note{what, 0, -1, {}};
  const size_t shared = std::min(a.lines.size(), b.lines.size());
  for (size_t i = 0; i < shared && note.first_frame < 0; ++i) {
    if ((a.lines[i].*name).empty() || (b.lines[i].*name).empty()) continue;
    ++note.compared;
    const int frame = static_cast<int>(i);
    if (!same_bytes(read(*a.bundle, frame), read(*b.bundle, frame))) note.first_frame = frame;
  }
  return note;
}

}  // namespace

std::vector<SessionNote> compare_sessions(const RecordSource& a, const RecordSource& b) {
  const auto scores = [](const BundleReader& bundle, int frame) { return bundle.output(frame).logits; };
  const auto labels = [](const BundleReader& bundle, int frame) { return bundle.output(frame).labels; };
  const size_t frames = std::min(a.lines.size(), b.lines.size());
  return {compare_infos(a.bundle->info(), b.bundle->info(), frames),
          compare_lines("inputs", a, b,
                        {"camera_type", "width", "height", "stride", "gate_level", "face_count", "faces",
                         "qerm_hint", "is_udc", "has_planes", "chroma", "after_process", "later"}),
          compare_lines("calls", a, b, {"process", "execute"}),
          compare_pixels(a, b),
          compare_files("scores", a, b, &FrameLine::logits, scores),
          compare_files("label maps", a, b, &FrameLine::labels, labels)};
}

}  // namespace tool
