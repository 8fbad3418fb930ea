#include <charconv>
#include <cstdlib>
#include <iostream>
#include <stdexcept>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <morvale/core/globals.h>
#include "runtime/engine.h"
#include "session/bundle.h"
#include "session/printable.h"

namespace morvale::runtime {
namespace {

class RecordedEngine final : public Engine {
 public:
  explicit RecordedEngine(const std::filesystem::path& folder)
      : name_(folder.string()), bundle_(folder, session::Damage::kTell) {
    if (!bundle_.warning().empty()) std::cerr << "vexa_vndk: " + session::printable(bundle_.warning()) + "\n";
  }

  int32_t open_result() const { return bundle_.info().open_result; }

  void open(const std::filesystem::path&, const std::string&, const std::string&) override {}

  vexa::DataBuffer run(const vexa::DataBuffer& input) override {
    const session::SessionInfo& info = bundle_.info();
    const std::vector<int32_t> expected{1, info.pad_size, info.pad_size, 3};
    if (input.shape != expected) {
      throw std::runtime_error(name_ + " was recorded with a model of " + std::to_string(info.pad_size) +
                               " pixels a side, another is asked for");
    }
    const int frame = next_frame();
    session::FrameOutput output = bundle_.output(frame);
    next_ = frame + 1;
    if (output.logits.empty()) {
      throw std::runtime_error(name_ + ": frame " + std::to_string(frame) +
                               ": the run failed when it was recorded");
    }
    logits_ = std::move(output.logits);
    return {logits_.data(), {1, info.net_size, info.net_size, morvale::kLabels}};
  }

 private:
  /// The frame that this run belongs to. The caller does not come here for a frame that the network did not
  /// run on: such frames are passed over, unless VEXA_BUNDLE_FRAME names the frame.
  int next_frame() {
    const bool named = jump();
    for (int frame = next_; frame < bundle_.frame_count(); ++frame) {
      if (bundle_.execute_result(frame)) return frame;
      if (named) {
        throw std::runtime_error(name_ + ": frame " + std::to_string(frame) +
                                 ": the network did not run on it");
      }
    }
    throw std::runtime_error(name_ + ": its " + std::to_string(bundle_.frame_count()) +
                             " frames are used up");
  }

  /// Follows VEXA_BUNDLE_FRAME; returns whether it is set.
  bool jump() {
    const char* text = std::getenv("VEXA_BUNDLE_FRAME");
    if (text == nullptr || *text == '\0') return false;
    const std::string_view digits(text);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), next_);
    if (error != std::errc{} || end != digits.data() + digits.size() || next_ < 0) {
      throw std::runtime_error("VEXA_BUNDLE_FRAME is \"" + std::string(digits) +
                               "\", not the number of a frame");
    }
    return true;
  }

  std::string name_;
  session::BundleReader bundle_;
  int next_ = 0;
  std::vector<float> logits_;
};

}  // namespace

RecordedSession open_recorded_session(const std::filesystem::path& bundle) {
  auto engine = std::make_unique<RecordedEngine>(bundle);
  const int32_t open_result = engine->open_result();
  return {std::move(engine), open_result};
}

}  // namespace morvale::runtime
