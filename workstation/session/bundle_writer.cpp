#include <exception>
#include <optional>
#include <stdexcept>

#include "session/bundle.h"
#include "session/destination.h"
#include "session/frame_parts.h"
#include "session/metadata.h"

namespace morvale::session {
namespace {

namespace fs = std::filesystem;

/// Runs a step about `bundle`; what the system says gets its name in front.
template <class Step>
auto naming(const fs::path& bundle, Step step) {
  try {
    return step();
  } catch (const BundleError&) {
    throw;
  } catch (const std::exception& error) {
    throw BundleError(bundle.string() + ": " + error.what());
  }
}

}  // namespace

struct BundleWriter::State {
  fs::path path;
  SessionInfo info;
  std::optional<Compressor> compressor;
  std::unique_ptr<Destination> destination;
  int count = 0;
  bool whole = true;  ///< no frame is half-written

  State(const fs::path& bundle, const SessionInfo& session, int compression) : path(bundle), info(session) {
    if (compression > 0 && Compressor::available()) compressor.emplace(compression);
    const std::string text = session_text(info);
    parse_session(text);
    destination = new_destination(path, text);
  }
};

BundleWriter::BundleWriter(const fs::path& bundle, const SessionInfo& info, int compression)
    : state_(naming(bundle, [&] { return std::make_unique<State>(bundle, info, compression); })) {}

BundleWriter::~BundleWriter() = default;

void BundleWriter::add(const FrameInput& input, const FrameOutput& output, std::span<const uint8_t> preview) {
  State& state = *state_;
  if (!state.whole) throw BundleError(state.path.string() + ": an earlier frame could not be written");
  std::optional<FrameParts> frame;
  try {
    frame.emplace(state.count, state.info, input, output, preview,
                  state.compressor ? &*state.compressor : nullptr);
  } catch (const std::runtime_error& error) {
    throw BundleError(state.path.string() + ": frame " + std::to_string(state.count) + ": " + error.what());
  }
  state.whole = false;
  state.destination->add(frame->parts(), output.result, frame->line());
  ++state.count;
  state.whole = true;
}

void BundleWriter::finish() {
  naming(state_->path, [&] { state_->destination->finish(); });
}

}  // namespace morvale::session
