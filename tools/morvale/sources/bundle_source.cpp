/// A recorded session as a source of frames.
#include "common/command.h"
#include "sources/frame_source.h"

namespace tool {
namespace {

class BundleSource final : public FrameSource {
 public:
  explicit BundleSource(const std::string& folder) : bundle_(folder) {}

  std::optional<SourceFrame> next() override {
    if (next_ >= bundle_.frame_count()) return std::nullopt;
    SourceFrame frame;
    frame.number = next_++;
    frame.input = bundle_.input(frame.number);
    frame.recorded = bundle_.output(frame.number);
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
  int next_ = 0;
};

}  // namespace

std::unique_ptr<FrameSource> make_bundle_source(const std::string& folder) {
  return std::make_unique<BundleSource>(folder);
}

}  // namespace tool
