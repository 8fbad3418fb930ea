/// Collects what passes between the caller, the library and the runtime, and writes it as session bundles.
///
///   VEXA_RECORD_DIR          where: each init ... deinit gets a folder session-0001, session-0002, ... in it
///   VEXA_RECORD_FRAMES=0     leaves out the pixels
///   VEXA_RECORD_FRAMES=thin  keeps those that the library reads; all of them where it draws into the frames
///   VEXA_RECORD_LABELS=1     keeps the label maps
///
/// Nothing here throws or changes what the library does. When something cannot be recorded, one line on
/// standard error says so and the session's recording ends; the bundle stays as far as it got. A session
/// belongs to the process that began it: a fork's child does not go on with it.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <memory>

#include <morvale/core/morvale_core.h>
#include "session/bundle.h"

namespace morvale::record {

class Recorder {
 public:
  /// The methods in the order in which a frame comes by. `core` is the library's, between its calls.
  void session_begins(const MorvaleCore& core) noexcept;
  void frame_begins(const MorvaleCore& core) noexcept;  ///< a frame still open is completed with core.result
  void executed(int32_t result, const float* scores, int32_t pad_size, double milliseconds) noexcept;
  void processed(int32_t result) noexcept;
  void analysis_begins(const MorvaleCore& core) noexcept;
  void frame_ends(const MorvaleCore& core, const PersonWholeMeta& result) noexcept;
  void session_ends(const MorvaleCore& core) noexcept;

 private:
  template <class Step>
  void guarded(Step step) noexcept;
  void take_frame(const MorvaleCore& core);
  void take_label_map(const MorvaleCore& core);
  void write(const MorvaleCore& core, const PersonWholeMeta& result);
  void open_bundle(const MorvaleCore& core);

  bool recording_ = false;  ///< a session is on and nothing has failed in it
  bool frame_open_ = false;
  pid_t owner_ = 0;    ///< the process that the session belongs to
  bool told_ = false;  ///< the one line has been written
  enum class Pixels { kNone, kThin, kAll };
  Pixels pixels_ = Pixels::kAll;
  bool keep_labels_ = false;
  session::FrameInput input_;  ///< kept from frame to frame for its memory
  session::FrameOutput output_;
  std::unique_ptr<session::BundleWriter> writer_;  ///< from the first completed frame on
};

/// The process's one recorder: the library keeps its state per process too.
Recorder& recorder();

}  // namespace morvale::record
