#include "replay/replay_outputs.h"

#include <filesystem>
#include <system_error>

#include "common/atomic_file.h"
#include "common/command.h"
#include "pictures/opencv_module.h"
#include "replay/replay_lines.h"
#include "service/frame_input.h"

namespace tool {
namespace {

using Comparison = std::optional<RecordComparison>;

class LineOutput final : public ReplayOutput {
 public:
  LineOutput(LineFormat format, bool heading, bool times, const std::string& source_name,
             DivertedOutput& data)
      : csv_(format == LineFormat::kCsv), times_(times), input_(source_name), data_(data) {
    if (csv_ && heading) data_.write_past(csv_heading(times_));
  }

  void add(const ReplayedFrame& frame) override {
    LineExtras extras{frame.source.name, std::nullopt, frame.source.seconds};
    if (times_) extras.times = frame.times;
    const auto line = csv_ ? csv_line : replay_json_line;
    data_.write_past(line(input_, frame.source.number, frame.report, extras));
  }

  void finish(const Comparison&) override {}

 private:
  bool csv_, times_;
  std::string input_;
  DivertedOutput& data_;
};

/// One 288-byte record after another, which `diff` and `inspect` read.
class BareRecordOutput final : public ReplayOutput {
 public:
  explicit BareRecordOutput(DivertedOutput& data) : data_(data) {}

  void add(const ReplayedFrame& frame) override {
    const auto* bytes = reinterpret_cast<const char*>(&frame.report.record);
    data_.write_past({bytes, sizeof frame.report.record});
  }
  void finish(const Comparison&) override {}

 private:
  DivertedOutput& data_;
};

class RecordOutput final : public ReplayOutput {
 public:
  RecordOutput(const std::string& folder, const morvale::session::SessionInfo& info) try
      : folder_(folder), writer_(folder, info) {
  } catch (const morvale::session::BundleError& error) {
    throw UsageError("--record: " + std::string(error.what()) + ".");
  }

  /// A session without a frame leaves no folder: the next try finds it free.
  ~RecordOutput() override {
    std::error_code ignored;
    if (empty_) std::filesystem::remove_all(folder_, ignored);
  }

  void add(const ReplayedFrame& frame) override {
    morvale::session::FrameOutput output;
    output.process_result = frame.report.process;
    if (frame.report.network) {
      output.execute_result = frame.report.network->result;
      output.logits = frame.report.network->scores;
      output.network_ms = frame.times.network;
    }
    output.result = frame.report.record;
    output.labels = frame.report.label_map;
    empty_ = false;
    try {
      writer_.add(frame.source.input, output);
    } catch (const morvale::session::BundleError& error) {
      throw RunError("--record: " + std::string(error.what()) + ".");
    }
  }

  void finish(const Comparison&) override {
    if (!empty_) writer_.finish();
  }

 private:
  std::string folder_;
  bool empty_ = true;
  morvale::session::BundleWriter writer_;
};

class ReportOutput final : public ReplayOutput {
 public:
  ReportOutput(const std::string& folder, ReportHead head) : folder_(folder), page_(std::move(head)) {
    ReportPage::make_folder(folder_);  // better told before the first frame than behind the last
  }

  void add(const ReplayedFrame& frame) override {
    // A frame that came without pixels went through the library as zeros: nothing to look at.
    const bool seen = !frame.source.input.nv21.empty() && frame.source.input.has_planes;
    page_.add({frame.source.number, frame.source.name, frame.report,
               seen ? frame.planes : std::span<const uint8_t>(), frame.times,
               /*boxes_known=*/true, frame.source.seconds});
  }

  void finish(const Comparison& comparison) override {
    if (comparison) page_.compare_with(*comparison);
    page_.write(folder_);
  }

 private:
  std::string folder_;
  ReportPage page_;
};

class PictureOutput final : public ReplayOutput {
 public:
  PictureOutput(int frame, std::string file, std::string source_name)
      : frame_(frame), file_(std::move(file)), input_(std::move(source_name)) {}

  void add(const ReplayedFrame& frame) override {
    if (frame.source.number != frame_ || frame.source.input.nv21.empty() || frame.report.process != 0) return;
    const Geometry& geometry = frame.report.geometry;
    const Frame seen{frame.source.name.empty() ? input_ : frame.source.name,
                     geometry.width,
                     geometry.height,
                     geometry.stride,
                     {frame.planes.begin(), frame.planes.end()}};
    write_file(file_, opencv().annotated_png(seen, frame_, frame.report));
    drawn_ = true;
  }
  void finish(const Comparison&) override {
    if (!drawn_)
      throw UsageError("--picture: there is no frame " + std::to_string(frame_) +
                       " with pixels that was analysed.");
  }

 private:
  int frame_;
  std::string file_, input_;
  bool drawn_ = false;
};

class TraceOutput final : public ReplayOutput {
 public:
  TraceOutput(const std::string& file, const std::string& source_name) : file_(file), input_(source_name) {
    const std::filesystem::path folder = std::filesystem::absolute(file_).parent_path();
    std::error_code error;
    if (std::filesystem::is_directory(file_, error) || !std::filesystem::is_directory(folder, error))
      throw UsageError("--trace: " + file_ + " cannot be a file; name one in a folder that exists.");
  }

  void add(const ReplayedFrame& frame) override {
    const std::string& name = frame.source.name.empty() ? input_ : frame.source.name;
    trace_.add(frame.source.number, name, frame.read_begin, frame.report);
  }

  void finish(const Comparison&) override { trace_.write(file_); }

 private:
  std::string file_, input_;
  Trace trace_;
};

}  // namespace

std::unique_ptr<ReplayOutput> make_line_output(LineFormat format, bool heading, bool times,
                                               const std::string& source_name, DivertedOutput& data) {
  if (format == LineFormat::kRecords) return std::make_unique<BareRecordOutput>(data);
  return std::make_unique<LineOutput>(format, heading, times, source_name, data);
}

std::unique_ptr<ReplayOutput> make_record_output(const std::string& folder,
                                                 const morvale::session::SessionInfo& info) {
  return std::make_unique<RecordOutput>(folder, info);
}

std::unique_ptr<ReplayOutput> make_report_output(const std::string& folder, ReportHead head) {
  return std::make_unique<ReportOutput>(folder, std::move(head));
}

std::unique_ptr<ReplayOutput> make_picture_output(int frame, const std::string& file,
                                                  const std::string& source_name) {
  return std::make_unique<PictureOutput>(frame, file, source_name);
}

std::unique_ptr<ReplayOutput> make_trace_output(const std::string& file, const std::string& source_name) {
  return std::make_unique<TraceOutput>(file, source_name);
}

}  // namespace tool
