/// Where the frames of a replay come from: recordings, videos, folders of pictures, one photograph panned.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "service/camera_service.h"
#include "service/frame_input.h"
#include "session/bundle.h"

namespace tool {

/// One frame as its source delivers it.
struct SourceFrame {
  int number = 0;                 ///< counted from 0 in the source
  std::string name;               ///< a file of its own; empty: none
  std::optional<double> seconds;  ///< the film's own time stamp; absent: the source has none
  morvale::session::FrameInput input;
  std::optional<morvale::session::FrameOutput> recorded;  ///< what a recording says the library made of it
  std::string damage;  ///< why it cannot be delivered, as a sentence without its end; empty: it can
};

enum class SourceKind { kBundle, kVideo, kY4m, kPictures, kPan };

/// "bundle", "video", "y4m", "pictures", "pan".
const char* name_of(SourceKind kind);

/// Frames in their order. The methods throw UsageError for what cannot be read.
class FrameSource {
 public:
  virtual ~FrameSource() = default;

  /// Nothing behind the last frame.
  virtual std::optional<SourceFrame> next() = 0;
  /// Passes over one frame; false behind the last one.
  virtual bool skip() { return next().has_value(); }
  /// How many frames there are, when that is known before they are read.
  virtual std::optional<int> count() const { return std::nullopt; }
  /// The files of its frames, where each has one of its own.
  virtual std::vector<std::string> files() const { return {}; }
  /// The files beside them that are no frames.
  virtual std::vector<std::string> passed_over() const { return {}; }
  /// Files that could not be read so far; they were left out.
  virtual std::vector<std::string> unusable() const { return {}; }
  /// Frames so far whose data is damaged; they were delivered as the decoder left them.
  virtual int damaged_frames() const { return 0; }
};

/// What an input is, by its name and, for folders, by what is in it.
SourceKind kind_of_input(const std::string& input);

/// `keep_going`: a damaged frame is told of in its place, where it otherwise ends the source.
std::unique_ptr<FrameSource> make_bundle_source(const std::string& bundle, bool keep_going);
std::unique_ptr<FrameSource> make_y4m_source(const std::string& file);  ///< "-": standard input
/// Pictures and panned frames get a size; recordings and videos have their own. `keep_going`: a picture that
/// cannot be read is told of and left out, where it otherwise ends the source.
std::unique_ptr<FrameSource> make_picture_source(const std::string& folder_or_file, const FrameShape& shape,
                                                 bool keep_going);
/// Stands behind opencv(); what reads videos behind open_video().
std::unique_ptr<FrameSource> make_pan_source(const std::string& photograph, FrameSize size, int frames);

/// The record and the pixels that a camera would deliver for this frame.
inline morvale::session::FrameInput input_of(Frame frame) {
  morvale::session::FrameInput input;
  input.record.width = frame.width;
  input.record.height = frame.height;
  input.record.stride = frame.stride;
  input.nv21 = std::move(frame.nv21);
  return input;
}

}  // namespace tool
