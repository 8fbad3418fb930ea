/// A recorded session as a source of frames.
#include "common/command.h"
#include "sources/frame_source.h"

namespace tool {
namespace {

using morvale::session::BundleError;
using morvale::session::Damage;

class BundleSource final : public FrameSource {
 public:
  BundleSource(const std::string& bundle, bool keep_going)
      : bundle_(bundle, keep_going ? Damage::kTell : Damage::kRefuse), keep_going_(keep_going) {}

  std::optional<SourceFrame> next() override {
    if (next_ >= bundle_.frame_count()) return std::nullopt;
    SourceFrame frame;
    frame.number = next_++;
    try {
      frame.input = bundle_.input(frame.number);
      frame.recorded = bundle_.output(frame.number);
    } catch (const BundleError& error) {
      if (!keep_going_) throw;
      frame.damage = error.what();
    }
    return frame;
  }

  bool skip() override {
    if (next_ >= bundle_.frame_count()) return false;
    ++next_;
    return true;
  }

  std::optional<int> count() const override { return bundle_.frame_count(); }

 private:
  morvale::session::BundleReader bundle_;
  bool keep_going_;
  int next_ = 0;
};

}  // namespace

std::unique_ptr<FrameSource> make_bundle_source(const std::string& bundle, bool keep_going) {
  return std::make_unique<BundleSource>(bundle, keep_going);
}

}  // namespace tool
