/// The session bundle: a recording, frame by frame, so that it replays bit for bit. A folder, or a packed
/// file (a tar) of the same files. docs/session-bundle.md describes them for readers in other languages.
///
///   session.json      what the session was: version, camera type, model geometry, how it was made
///   metadata.jsonl    one line a frame: every field of the caller's record that the library reads, and the
///                     names of the frame's files below
///   frames/           NV21, whole or what the library reads of it; the name carries size and stride
///                     (optional, per frame)
///   logits/           the network's output as NumPy .npy, float32 NETSIZE x NETSIZE x 5 (absent for a
///                     frame that the network gave none for)
///   records.bin       288 bytes a frame
///   labels/           the label map that the analysis read (optional)
///   previews/         a small JPEG for the eye (optional)
#pragma once

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <vector>

#include <morvale/core/records.h>
#include "session/thin.h"

namespace morvale::session {

/// The version that is written. Older ones are read: they lack keys that may be absent here too.
constexpr int kBundleVersion = 3;

/// Something in a bundle cannot be used. The text names file and frame.
struct BundleError : std::runtime_error {
  using runtime_error::runtime_error;
};

struct SessionInfo {
  int32_t camera_type = morvale::kFrontCamera;
  int32_t pad_size = 256, net_size = 64;
  int32_t open_result = 0;  ///< what the runtime's open returned; -1: no model was loaded
  int32_t debug_level = 0;  ///< the library's; from 1 on it drew into the frames
  std::string made_by;      ///< program, version and how, for people
  std::string library;      ///< who the library said it was (session/build_note.h); empty: not known
};

/// What Morvale_core_afterProcss found in the caller's record where it was no longer what Morvale_process had
/// seen.
struct LaterRecord {
  int32_t camera_type, width, height, stride;
  bool has_luma;  ///< yPlane was not null; nothing but debug drawings goes there

  bool operator==(const LaterRecord&) const = default;
};

/// Where the caller had the chroma plane.
enum class ChromaPlace {
  kFound,   ///< uvPlane was equal to yPlane: the stride leads there
  kBehind,  ///< uvPlane pointed directly behind the luma plane
  kApart,   ///< uvPlane pointed elsewhere
};

/// One camera frame as delivered: the caller's record without its pointers, and its pixels when they are
/// kept.
struct FrameInput {
  MorvaleData_t record{};  ///< yPlane and uvPlane are null; faces up to faceCount
  ChromaPlace chroma = ChromaPlace::kFound;
  bool has_planes = true;            ///< neither plane pointer was null
  bool after_process = true;         ///< the caller called Morvale_core_afterProcss for this frame
  std::optional<LaterRecord> later;  ///< absent: Morvale_core_afterProcss saw what Morvale_process had seen
  /// Luma rows, then chroma rows, of record.stride bytes each (docs/session-bundle.md for strides that are no
  /// row length); empty: not kept.
  std::vector<uint8_t> nv21;
  /// For the writer, in place of nv21: the samples of it that are kept. A reader gives nv21 with the samples
  /// of a thin frame in it and their neighbours' values between them.
  std::optional<ThinFrame> thin;

  /// The camera whose analysis wrote the frame's record.
  int32_t analysed_camera_type() const { return later ? later->camera_type : record.cameraType; }
};

/// What the library made of it.
struct FrameOutput {
  int32_t process_result = 0;  ///< what Morvale_process returned
  /// What execute returned; absent: it was not called. Beside logits, absent means 0.
  std::optional<int32_t> execute_result;
  std::vector<float> logits;  ///< net_size * net_size * 5; empty: the network gave no scores
  PersonWholeMeta result{};
  std::vector<uint8_t> labels;       ///< net_size * segFactor * 5 bytes; empty: not kept
  std::optional<double> network_ms;  ///< how long execute took; not compared in a replay
};

/// Writes a bundle. In a folder, every frame has left the process before add() returns, its line in
/// metadata.jsonl last: a crash loses at most the frame that was being written. A packed file is there, all
/// of it, when finish() returns.
class BundleWriter {
 public:
  /// A name that ends in ".morvale" is a packed file, which must not exist; any other a folder, which must
  /// not exist or be empty. `compression` is a level of Zstandard for the frames' files; 0, and a build
  /// without it, leave them plain. Throws BundleError, and then leaves nothing.
  BundleWriter(const std::filesystem::path& bundle, const SessionInfo& info, int compression = 0);
  /// Without finish() no packed file is left; a folder is.
  ~BundleWriter();
  BundleWriter(const BundleWriter&) = delete;
  BundleWriter& operator=(const BundleWriter&) = delete;

  /// `preview`: a JPEG for the eye, or nothing. Throws BundleError: before anything is written when the sizes
  /// do not fit, else (a full disk) for good, since the frame is then half-written; a reader leaves it out.
  void add(const FrameInput& input, const FrameOutput& output, std::span<const uint8_t> preview = {});

  /// Throws BundleError. Nothing may be added behind it.
  void finish();

 private:
  struct State;
  std::unique_ptr<State> state_;
};

struct FrameLine;

/// What a reader does, when the bundle is opened, about frames that are damaged.
enum class Damage { kRefuse, kTell };

/// Reads a bundle. The constructor checks everything that can be checked without reading pixels and scores; a
/// half-written last frame is left out and told of in `warning()`. What is read is held to its hash.
class BundleReader {
 public:
  /// Throws BundleError; with Damage::kTell not for what concerns one frame alone, which damage() tells.
  explicit BundleReader(const std::filesystem::path& bundle, Damage damage = Damage::kRefuse);
  ~BundleReader();
  BundleReader(const BundleReader&) = delete;
  BundleReader& operator=(const BundleReader&) = delete;

  const SessionInfo& info() const;
  int frame_count() const;
  const std::string& warning() const;  ///< empty, or one sentence

  /// All of frame `index`, pixels, scores and labels included where the bundle has them. Throws BundleError.
  FrameInput input(int index) const;
  FrameOutput output(int index) const;
  /// The samples of a frame that is_thin.
  ThinFrame thin_frame(int index) const;

  /// What is known of frame `index` without reading a file: input() without its pixels, its record, whether
  /// the bundle has its pixels, and what execute returned (absent: the network was not asked).
  const FrameInput& metadata(int index) const;
  const PersonWholeMeta& record(int index) const;
  const FrameLine& line(int index) const;  ///< session/metadata.h
  bool has_pixels(int index) const;
  bool is_thin(int index) const;  ///< it has them, and some samples only
  std::optional<int32_t> execute_result(int index) const;

  /// Reads all of frame `index` and says what of it is damaged; nothing where it is as it was recorded. A
  /// frame without hashes, as older versions wrote it, is held to its sizes alone.
  std::optional<std::string> damage(int index) const;

 private:
  struct Files;
  std::unique_ptr<Files> files_;
};

/// Reads a float32 .npy array (NumPy format 1.0, little-endian, C order). Throws BundleError.
struct NpyArray {
  std::vector<int32_t> shape;
  std::vector<float> values;
};
NpyArray read_npy(const std::filesystem::path& file);

}  // namespace morvale::session
